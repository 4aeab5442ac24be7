#include "tools/lumenveil/render_plan.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <set>

#include "hostsdk/IDSImageEffect.h"
#include "tools/lumenveil/channel_selection.h"
#include "tools/lumenveil/checked_image_output.h"
#include "tools/lumenveil/cli_error.h"
#include "tools/lumenveil/host_format_choice.h"
#include "tools/lumenveil/image_input.h"
#include "tools/lumenveil/run_guards.h"
#include "embed/host_frame.h"
#include "embed/transform_limit.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kPatternHelp = " (a frame number pattern: %04d, # for four digits or @ for one)";

uint32_t fieldMaskOf(const std::string& fields)
{
    if (fields == "even")
        return DS_FIELD_EVEN;
    if (fields == "odd")
        return DS_FIELD_ODD;
    return DS_FIELDS_BOTH;
}

// The frames, with each output's pattern checked against the input's.
FrameList checkSequence(const RenderRequest& r, const RunOutputs& outputs, bool sequence)
{
    if (!sequence) {
        bool patterned = hasFramePattern(r.spread);
        for (const RunOutput& output : outputs.All())
            patterned = patterned || hasFramePattern(output.pattern);
        if (patterned)
            throw UsageError(std::string("only a sequence INPUT goes with output patterns") + kPatternHelp);
        if (!r.frames.empty())
            throw UsageError(std::string("--frames needs a sequence INPUT") + kPatternHelp);
        if (r.renumber >= 0 || r.framesClamp)
            throw UsageError(std::string(r.framesClamp ? "--frames-clamp" : "--renumber") + " needs a sequence INPUT" +
                             kPatternHelp);
        return FrameList{};
    }
    for (const RunOutput& output : outputs.All())
        if (!hasFramePattern(output.pattern))
            throw UsageError("INPUT is a sequence: " + output.name + " needs a frame number pattern too" +
                             kPatternHelp);
    if (r.frames.empty())
        throw UsageError("INPUT is a sequence: give its frames with --frames A-B");
    return parseFrameList(r.frames);
}

std::optional<SampleDepth> depthOf(const std::string& depth)
{
    if (depth == "8")
        return SampleDepth::U8;
    if (depth == "16")
        return SampleDepth::U16;
    if (depth == "half")
        return SampleDepth::Half;
    if (depth == "float")
        return SampleDepth::Float;
    return std::nullopt;
}

// What kind of file an existing output path names, when it is not one the
// tool may replace ("" when it is a regular file or there is none): a link
// is refused rather than written through, since the rename that puts a
// finished file into place would replace the link itself.
std::string specialFileKind(const std::string& path)
{
    struct stat status;
    if (lstat(path.c_str(), &status) != 0 || S_ISREG(status.st_mode))
        return "";
    if (S_ISLNK(status.st_mode))
        return "a symbolic link";
    if (S_ISDIR(status.st_mode))
        return "a directory";
    if (S_ISFIFO(status.st_mode))
        return "a FIFO (named pipe)";
    if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))
        return "a device";
    return "not a regular file";
}

}  // namespace

bool depthInInput(const RenderRequest& r, const RenderPlan& plan)
{
    return plan.depthMap && plan.depthMap->path == r.input;
}

RenderPlan checkRequest(const RenderRequest& r, const RunOutputs& outputs)
{
    if (r.input.empty())
        throw UsageError("render needs an INPUT file (or only --save-preset)");
    if (r.output.empty())
        throw UsageError("render needs an output file: -o OUTPUT");
    RenderPlan plan;
    plan.sequence = hasFramePattern(r.input);
    plan.frames = checkSequence(r, outputs, plan.sequence);
    if (r.renumber < -1)
        throw UsageError("--renumber: " + std::to_string(r.renumber) + " is below 0");
    if (r.renumber >= 0)
        plan.renumberOffset = r.renumber - plan.frames.First();
    if (!(r.rate > 0.0) || !std::isfinite(r.rate))
        throw UsageError("--rate must be above 0");
    if (!std::isfinite(r.progressAfter))
        throw UsageError("--progress-after must be a number of seconds, 0 or more");
    if (!(r.pixelAspect > 0.0) || !std::isfinite(r.pixelAspect))
        throw UsageError("--pixel-aspect must be above 0");
    plan.selectors = channelSelectors(r.keep, r.matte);
    plan.fieldMask = fieldMaskOf(r.fields);
    plan.depth = depthOf(r.depth);
    if (!r.depth.empty() && !plan.depth)
        plan.depthMap = DepthSource{r.depth, r.depthChannel};
    else if (!r.depthChannel.empty())
        plan.depthMap = DepthSource{r.input, r.depthChannel};
    if (!r.coc.empty() && !plan.depthMap)
        throw UsageError("--coc needs a depth map: --depth FILE");
    checkOutputFormats(r, outputs, plan.frames.First(), plan.depth);
    if (!r.hostFormat.empty())
        chooseHostFormat(r.hostFormat, SampleDepth::U8);
    return plan;
}

namespace {

// "3, 7-9, 12": the frames as runs of consecutive numbers.
std::string frameRuns(const std::vector<long>& frames)
{
    std::string text;
    for (size_t i = 0; i < frames.size();) {
        size_t j = i;
        while (j + 1 < frames.size() && frames[j + 1] == frames[j] + 1)
            ++j;
        text += (text.empty() ? "" : ", ") + std::to_string(frames[i]) +
                (j > i ? "-" + std::to_string(frames[j]) : std::string());
        i = j + 1;
    }
    return text;
}

}  // namespace

bool frameFilesExist(const RenderRequest& r, const RenderPlan& plan, long f)
{
    auto exists = [f](const std::string& pattern) {
        std::error_code error;
        return pattern.empty() || !hasFramePattern(pattern) || fs::exists(framePath(pattern, f), error);
    };
    return exists(r.input) && exists(r.spread) && exists(plan.depthMap ? plan.depthMap->path : "");
}

void clampToExistingFrames(const RenderRequest& r, RenderPlan& plan)
{
    if (!r.framesClamp)
        return;
    std::vector<long> kept, skipped;
    for (long f : plan.frames.frames)
        (frameFilesExist(r, plan, f) ? kept : skipped).push_back(f);
    if (kept.empty())
        throw Failure("--frames-clamp: none of the frames " + frameRuns(skipped) + " exists (" +
                      framePath(r.input, skipped.front()) + " ...)");
    if (!skipped.empty())
        std::fprintf(stderr, "lumenveil: --frames-clamp: skipped frames %s, whose files do not exist\n",
                     frameRuns(skipped).c_str());
    plan.frames.frames = kept;
}

namespace {

// The path as one file: `path` made absolute with links and dots resolved
// as far as it exists.
std::string samePlace(const std::string& path)
{
    std::error_code error;
    const fs::path resolved = fs::weakly_canonical(fs::absolute(path), error);
    return error ? path : resolved.string();
}

// UsageError when a file the run writes is one it reads, unless
// --overwrite-input allows it.
void checkOutputsAreNotInputs(const RenderRequest& r, const RenderPlan& plan, const RunOutputs& outputs)
{
    if (r.overwriteInput)
        return;
    std::set<std::string> inputs;
    for (long f : plan.frames.frames)
        for (const std::string& pattern : {r.input, r.spread, plan.depthMap ? plan.depthMap->path : std::string()})
            if (!pattern.empty())
                inputs.insert(samePlace(framePath(pattern, f)));
    if (!r.preset.empty())
        inputs.insert(samePlace(r.preset));
    auto refuse = [&](const std::string& name, const std::string& path) {
        if (inputs.count(samePlace(path)))
            throw UsageError(name + " " + path + " is also an input of the run: give --overwrite-input to "
                             "replace it");
    };
    for (const RunOutput& output : outputs.All())
        for (long f : plan.frames.frames)
            refuse(output.name, output.Path(f));
    if (!r.savePreset.empty())
        refuse("--save-preset", r.savePreset);
}

}  // namespace

RenderSetup checkRun(const EffectInstance& effect, const RenderRequest& r, const RenderPlan& plan,
                     const RunOutputs& outputs, const LightPath& light)
{
    checkOutputsAreNotInputs(r, plan, outputs);
    checkOverlayShape(effect, r, plan.frames.frames);
    checkPresetKeys(r);
    for (long f : plan.frames.frames) {
        checkRegularFile(framePath(r.input, f));
        if (!r.spread.empty())
            checkRegularFile(framePath(r.spread, f));
    }
    RenderSetup setup;
    setup.header = readImageHeader(framePath(r.input, plan.frames.First()), depthInInput(r, plan));
    setup.light = light;
    checkOutputFormats(r, outputs, plan.frames.First(), plan.depth, setup.header.depth);
    if (plan.depthMap)
        for (long f : plan.frames.frames) {
            const DepthSource source{framePath(plan.depthMap->path, f), plan.depthMap->channel};
            const DepthHeader depth = readDepthHeader(source);
            if (depth.width != setup.header.width || depth.height != setup.header.height)
                throw Failure("the depth map " + source.path + " is " + std::to_string(depth.width) + " x " +
                              std::to_string(depth.height) + " but " + framePath(r.input, f) + " is " +
                              std::to_string(setup.header.width) + " x " + std::to_string(setup.header.height) +
                              ": they must be the same size");
        }
    setup.format = chooseHostFormat(r.hostFormat, light.Linear() ? SampleDepth::Float : setup.header.depth);
    setup.rows = hostFrameRows(setup.header.height, !r.exactHostFrame);
    const int32_t columns = hostFrameColumns(setup.header.width, *setup.format);
    for (long f : plan.frames.frames) {
        const std::string problem = transformLimitProblem(effect, columns, setup.header.height, f / r.rate, setup.rows);
        if (!problem.empty())
            throw Failure("cannot render " + framePath(r.input, f) + ": " + problem);
    }
    for (const RunOutput& output : outputs.All()) {
        imageOutputFormat(output.Path(plan.frames.First()));
        for (long f : plan.frames.frames)
            checkWritable(output.Path(f));
    }
    warnMatteWithoutAlpha(r, framePath(r.input, plan.frames.First()), setup.header);
    return setup;
}

void checkWritable(const std::string& path)
{
    fs::path directory = fs::path(path).parent_path();
    if (directory.empty())
        directory = ".";
    std::error_code error;
    if (!fs::is_directory(directory, error))
        throw Failure("cannot write " + path + ": no directory " + directory.string());
    if (access(directory.c_str(), W_OK) != 0)
        throw Failure("cannot write " + path + ": " + directory.string() + " is not writable");
    if (const std::string kind = specialFileKind(path); !kind.empty())
        throw Failure("cannot write " + path + ": it is " + kind + "; only a regular file is replaced");
}
