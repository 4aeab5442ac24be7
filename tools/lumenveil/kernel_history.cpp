#include "tools/lumenveil/kernel_history.h"

#include <algorithm>
#include <cmath>
#include <deque>

#include "tools/lumenveil/frame_pattern.h"

std::vector<long> framesBefore(const RenderRequest& r, const RenderPlan& plan, long first)
{
    std::vector<long> frames;
    if (!plan.sequence || plan.depthMap || !hasFramePattern(r.input))
        return frames;
    const long start = firstFrameOnDisk(r.input);
    for (long f = start < 0 ? first : start; f < first; ++f)
        if (frameFilesExist(r, plan, f))
            frames.push_back(f);
    return frames;
}

std::vector<long> kernelBuildsAmong(IDSKernelHistory* history, const std::vector<long>& frames, double rate)
{
    std::deque<long> builds;
    for (long f : frames) {
        int32_t buildsHere = 0;
        if (FAILED(history->TrackKernel(f / rate, &buildsHere)) || !buildsHere)
            continue;
        builds.push_back(f);
        if (builds.size() > kMostHistoryBuilds)
            builds.pop_front();
    }
    return {builds.begin(), builds.end()};
}

size_t historyBuildsNeeded(const std::vector<double>& traces, size_t available)
{
    double logSum = 0.0;
    for (double trace : traces)
        logSum += std::log(trace);
    if (traces.empty() || logSum <= std::log(kFadedTrace))
        return std::min(traces.size(), available);
    const double meanLog = logSum / static_cast<double>(traces.size());
    if (!(meanLog < 0.0))
        return available;
    const double needed = std::ceil(std::log(kFadedTrace) / meanLog) + 1.0;
    return needed >= static_cast<double>(available) ? available : static_cast<size_t>(needed);
}
