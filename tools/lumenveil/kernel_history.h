// The frames before a run's first: a run that starts at a later frame of a
// sequence first brings the effect to where a run from the sequence's first
// frame would stand, so that a sequence split into runs gives the bytes of
// one long run.
#pragma once

#include <vector>

#include "hostsdk/IDSKernelHistory.h"
#include "tools/lumenveil/render_plan.h"

// How many of the kernels built before the first frame are built again. Each
// kernel keeps a trace of the one before it, weighted about 1 / (its area in
// pixels + 1); sixteen steps back that trace is below double precision for
// apertures of two pixels' radius and more.
inline constexpr int kKernelHistoryBuilds = 16;

// The frames a run over the whole sequence would render before `first`: from
// the lowest-numbered INPUT file on disk, those whose files exist. Empty for
// a still, a depth-of-field render, or a first frame that is the sequence's
// first.
std::vector<long> framesBefore(const RenderRequest& request, const RenderPlan& plan, long first);

// Tracks `frames` in order at frame / `rate` seconds and gives the last
// kKernelHistoryBuilds of them at which the effect would build a kernel.
std::vector<long> kernelBuildsAmong(IDSKernelHistory* history, const std::vector<long>& frames, double rate);
