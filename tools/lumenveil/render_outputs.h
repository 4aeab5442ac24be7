// The files a render writes for each frame: the frame itself (OUTPUT), and,
// when asked for, the frame with the viewer overlay (--overlay) and the
// point-spread picture (--psf). One list, so that each check and each path
// is made the same way for all of them.
#pragma once

#include <string>
#include <vector>

#include "tools/lumenveil/render_request.h"

enum class OutputKind { Frame, Overlay, PointSpread, CircleOfConfusion };

struct RunOutput {
    OutputKind kind;
    std::string name;     // as messages name it: "OUTPUT", "--overlay", "--psf"
    std::string pattern;  // the path; in a sequence, with a frame number pattern
    long offset = 0;      // added to a frame's number in the path (--renumber)

    // The path of frame `frame`.
    std::string Path(long frame) const;
};

class RunOutputs {
public:
    // OUTPUT, then the overlay and point-spread pictures if the request asks for them.
    explicit RunOutputs(const RenderRequest& request);

    const std::vector<RunOutput>& All() const { return outputs; }
    // Every output's frames written under their number plus `offset`.
    void Renumber(long offset);
    // The output of `kind`, or null when the run does not write it.
    const RunOutput* Find(OutputKind kind) const;

private:
    std::vector<RunOutput> outputs;
};
