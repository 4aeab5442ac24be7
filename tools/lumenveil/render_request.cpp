#include "tools/lumenveil/render_request.h"

#include "tools/lumenveil/output_format_table.h"

void addRenderOptions(CLI::App& command, RenderRequest& r)
{
    command.add_option("INPUT", r.input,
                       "Input image file, or a numbered sequence with %04d, # (four digits) or @ (one digit) in its name "
                       "(with --frames)");
    command.add_option("-o,--output", r.output, "Output image file or sequence pattern; its format comes from its name");
    command.add_option("--frames", r.frames,
                       "Frames of a sequence: A-B, A-BxN (every Nth), or a list of these and single frames, "
                       "1,5,9-12. A run starts with a fresh effect and an empty kernel cache (docs/farm.md says "
                       "when a split run's bytes equal one long run's)")
        ->type_name("LIST");
    command.add_option("--renumber", r.renumber,
                       "Number the output frames from START: the first frame listed becomes START, the others "
                       "keep their distance from it")
        ->type_name("START");
    command.add_flag("--overwrite-input", r.overwriteInput,
                     "Let an output replace one of the run's input files (a frame, the Spread picture, the depth "
                     "map, the preset); without it such a run is refused before anything is written");
    command.add_flag("--frames-clamp", r.framesClamp,
                     "Render the listed frames whose INPUT exists and name the skipped ones, instead of failing "
                     "(a farm chunk that runs past the end of a sequence)");
    command.add_option("--rate", r.rate, "Frames per second; a key at frame F lies at F / rate seconds")
        ->capture_default_str();
    command.add_option("--key", r.keys,
                       "A key NAME=FRAME:VALUE of an animatable parameter (repeatable), e.g. radius-x=10:0.2, at "
                       "a whole frame from 0 (as a preset's keys must be at --rate); values between keys are "
                       "interpolated")
        ->type_name("NAME=FRAME:VALUE");
    command.add_option("--spread", r.spread,
                       "Second input (Spread): the picture the Image shape cuts its aperture from; same size as "
                       "INPUT. Without it the aperture is cut from INPUT");
    command.add_option("--preset", r.preset, "Load the effect's state (values and keys) from a JSON preset first");
    command.add_option("--save-preset", r.savePreset,
                       "Save the effect's state, after the options and keys, as a JSON preset (INPUT may be left out)");
    command.add_option("--pixel-aspect", r.pixelAspect, "Pixel aspect ratio of the frames (width / height of a pixel)")
        ->capture_default_str();
    command.add_option("--fields", r.fields,
                       "Interlaced fields to process: even (rows 0, 2, 4, ... from the top), odd (rows 1, 3, ...) "
                       "or both; rows of the other field stay as in INPUT")
        ->check(CLI::IsMember({"odd", "even", "both"}))
        ->capture_default_str();
    command.add_option("--keep", r.keep, "Channels taken unchanged from INPUT, e.g. a or r,g,b")->type_name("r,g,b,a");
    command.add_flag("--matte", r.matte,
                     "Use INPUT's alpha as the matte: the effect shows where alpha is full (a warning when INPUT "
                     "has no alpha)");
    command.add_option("--host-format", r.hostFormat,
                       "Host pixel format the frames are handed to the effect in (default MFIF_RGBA_RAW_32 for "
                       "8-bit files, MFIF_RGBA_FLOAT otherwise); Cb Y Cr Y formats get the colour through their "
                       "BT.601 or BT.709 matrix, one chroma sample for two pixels; see `lumenveil formats`")
        ->type_name("NAME");
    command.add_option("--compression", r.compression,
                       "Compression of OUTPUT and --overlay, with a level after a colon where it takes one "
                       "(zip:1 fast to zip:9 small); each format takes its own (default: the format's own): " +
                           compressionHelp() + "; the others have no choice")
        ->type_name("NAME[:LEVEL]");
    command.add_option("--depth", r.depth,
                       "8, 16, half or float: the sample depth of OUTPUT and --overlay, which their format must "
                       "hold (default: the input's, or the nearest the format holds): " +
                           depthHelp() + ". Any other value is a depth map: a one-channel picture of INPUT's size "
                                         "(a pattern with --frames for a sequence), and the render is Lumenveil "
                                         "Depth's, whose blur follows it (--focus, --radius-infinity or the lens "
                                         "values)")
        ->type_name("8|16|half|float|FILE");
    command.add_option("--depth-channel", r.depthChannel,
                       "The channel of the depth map holding depth (Z, depth.Z); without a depth map, INPUT's")
        ->type_name("NAME");
    command.add_option("--coc", r.coc,
                       "With a depth map, also write the blur radius of each pixel, grey: in pixels in a float "
                       "file (EXR), else white at the frame's largest radius");
    command.add_flag("--exact-host-frame", r.exactHostFrame,
                     "Hand the frame to the effect as it is. By default the tool pads it to a multiple of four "
                     "rows by repeating its last row and crops the result, since the effect leaves the last "
                     "height mod 4 rows unconvolved (a band of wrong colour at the bottom)");
    command.add_option("--overlay", r.overlay,
                       "Also write the frame with the viewer overlay drawn over it by the effect's interactive "
                       "tool; only the image shape draws one, so it is refused for the others");
    command.add_option("--psf", r.psf,
                       "Also write the point-spread picture the effect used for the frame: the image of one point "
                       "of light through the aperture, grey, of the frame's size (with its padded rows)");
    command.add_option("--exposure", r.exposure,
                       "With --linear: multiply the input's colour by 2^STOPS before the render and the output's by "
                       "2^-STOPS after it, e.g. to lift an 8-bit picture's near-white above the highlight threshold")
        ->type_name("STOPS");
    command.add_flag("--unassociated-alpha", r.unassociatedAlpha,
                     "Read and write OpenEXR colour as stored, not multiplied by alpha (by default EXR files are "
                     "taken as associated, as their convention says; PNG and TIFF are always unassociated)");
    command.add_flag("-q,--quiet", r.quiet, "No progress line on stderr");
    command.add_option("--progress-after", r.progressAfter,
                       "On a terminal, a frame (of a sequence or a single file) that has taken this long shows its "
                       "file, its stage (reading, preparing, rendering, writing) and its time so far, redrawn a few "
                       "times a second until it is written")
        ->type_name("SECONDS")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
}
