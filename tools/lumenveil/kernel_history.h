// The frames before a run's first: a run that starts at a later frame of a
// sequence first brings the effect to where a run from the sequence's first
// frame would stand, so that a sequence split into runs gives the bytes of
// one long run.
#pragma once

#include <cstddef>
#include <vector>

#include "hostsdk/IDSKernelHistory.h"
#include "tools/lumenveil/render_plan.h"

// Kernels built again before the first frame at first, and at most. Each
// kernel keeps a trace of the one before it; how many it takes for that
// trace to fade depends on the apertures (about 1 / (area in pixels + 1) a
// kernel): a few for most, hundreds for apertures of a pixel.
inline constexpr size_t kFirstHistoryBuilds = 8;
inline constexpr size_t kMostHistoryBuilds = 256;
// A trace of this weight or less no longer reaches a sample.
inline constexpr double kFadedTrace = 1e-18;

// The frames a run over the whole sequence would render before `first`: from
// the lowest-numbered INPUT file on disk, those whose files exist. Empty for
// a still, a depth-of-field render, or a first frame that is the sequence's
// first.
std::vector<long> framesBefore(const RenderRequest& request, const RenderPlan& plan, long first);

// Tracks `frames` in order at frame / `rate` seconds and gives the last
// kMostHistoryBuilds of them at which the effect would build a kernel.
std::vector<long> kernelBuildsAmong(IDSKernelHistory* history, const std::vector<long>& frames, double rate);

// How many of the last builds to make again, when the last traces.size()
// of them kept `traces`: as many as make the product of traces, at their
// mean, fall to kFadedTrace, and at most `available`.
size_t historyBuildsNeeded(const std::vector<double>& traces, size_t available);
