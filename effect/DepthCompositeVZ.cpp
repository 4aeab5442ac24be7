#include "effect/DepthCompositeVZ.h"

#include <algorithm>
#include <cmath>

#include "effect/ParallelRowsVZ.h"
#include "generic/library/PluginVZ.h"

namespace {

// Layers of a smaller radius are not convolved: their kernel is one pixel.
constexpr float kSharpRadius = 0.5f;
// Coverage this close to 1 is whole.
constexpr float kWholeCoverage = 1.0f - 1e-6f;
// Coverage below these is the transforms' rounding, not content: a pixel's
// own (normalising by it would amplify that rounding into colour), and the
// sum around a pixel that completes it.
constexpr float kLeastCoverage = 1e-4f;
constexpr double kLeastPresent = 1e-2;

// Makes [*a, *b) an even span within 0..limit where it can: an odd kernel box
// puts the aperture's centre one pixel off that of an even one, and whole
// frames are even in practice.
void evenSpan(int32_t* a, int32_t* b, int32_t limit)
{
    if ((*b - *a) % 2 == 0)
        return;
    if (*b < limit)
        ++*b;
    else if (*a > 0)
        --*a;
}

PixelBox grown(const PixelBox& box, int32_t by, int32_t width, int32_t height)
{
    PixelBox g{std::max(box.x0 - by, 0), std::max(box.y0 - by, 0), std::min(box.x1 + by, width),
               std::min(box.y1 + by, height)};
    evenSpan(&g.x0, &g.x1, width);
    evenSpan(&g.y0, &g.y1, height);
    return g;
}

// The sum of a summed-area table (rows of `stride` entries, one more row and
// column than the box) over columns x0..x1-1 and rows y0..y1-1.
inline double boxSum(const double* table, size_t stride, int32_t x0, int32_t y0, int32_t x1, int32_t y1)
{
    return table[y1 * stride + x1] - table[y0 * stride + x1] - table[y1 * stride + x0] + table[y0 * stride + x0];
}

// Fills `table` with the summed-area table of `plane` (rows of `planeStride`)
// over `box`.
void sumTable(const float* plane, int32_t planeStride, const PixelBox& box, double* table)
{
    const size_t stride = static_cast<size_t>(box.Width()) + 1;
    std::fill(table, table + stride, 0.0);
    for (int32_t y = 0; y < box.Height(); ++y) {
        const float* row = plane + static_cast<size_t>(box.y0 + y) * planeStride + box.x0;
        double* out = table + (y + 1) * stride;
        const double* above = out - stride;
        out[0] = 0.0;
        double run = 0.0;
        for (int32_t x = 0; x < box.Width(); ++x) {
            run += row[x];
            out[x + 1] = above[x + 1] + run;
        }
    }
}

}  // namespace

void DepthCompositeVZ::completeBehind(const PixelBox& box, int32_t reach, int32_t width, int channels)
{
    bool present = false, hidden = false;
    for (int32_t y = box.y0; y < box.y1 && !(present && hidden); ++y) {
        const float* q = behindCoverage.data() + static_cast<size_t>(y) * width;
        for (int32_t x = box.x0; x < box.x1; ++x) {
            present |= q[x] > kLeastCoverage;
            hidden |= q[x] < kWholeCoverage;
        }
    }
    if (!present || !hidden)
        return;
    const size_t stride = static_cast<size_t>(box.Width()) + 1;
    const size_t tableSize = stride * (static_cast<size_t>(box.Height()) + 1);
    sums.resize(tableSize * (channels + 1));
    // One table a plane: the coverage first, then the channels.
    forEachRowSlice(channels + 1, [&](int first, int last) {
        for (int t = first; t <= last; ++t)
            sumTable(t == 0 ? behindCoverage.data() : behind[t - 1].data(), width, box, sums.data() + tableSize * t);
    });
    forEachRowSlice(box.Height(), [&](int first, int last) { fillRows(box, reach, width, channels, first, last); });
}

void DepthCompositeVZ::fillRows(const PixelBox& box, int32_t reach, int32_t width, int channels, int first,
                                int last)
{
    const size_t stride = static_cast<size_t>(box.Width()) + 1;
    const size_t tableSize = stride * (static_cast<size_t>(box.Height()) + 1);
    for (int32_t y = first; y <= last; ++y) {
        const int32_t y0 = std::max(y - reach, 0), y1 = std::min(y + reach + 1, box.Height());
        for (int32_t x = 0; x < box.Width(); ++x) {
            const size_t i = static_cast<size_t>(box.y0 + y) * width + box.x0 + x;
            const float q = behindCoverage[i];
            if (q >= kWholeCoverage)
                continue;
            const int32_t x0 = std::max(x - reach, 0), x1 = std::min(x + reach + 1, box.Width());
            const double present = boxSum(sums.data(), stride, x0, y0, x1, y1);
            if (present < kLeastPresent)
                continue;
            // What is missing of this pixel takes the average of what is
            // present around it.
            const double missing = 1.0 - q;
            for (int c = 0; c < channels; ++c)
                behind[c][i] += static_cast<float>(
                    missing * boxSum(sums.data() + tableSize * (c + 1), stride, x0, y0, x1, y1) / present);
            behindCoverage[i] = 1.0f;
        }
    }
}

void DepthCompositeVZ::takeLayer(const DepthFrameVZ& frame, const DepthLayersVZ& layers, int32_t index,
                                 const PixelBox& box, int channels, bool coverageFlat)
{
    const size_t count = static_cast<size_t>(box.Width()) * box.Height();
    for (int c = 0; c < channels; ++c)
        layer[c].resize(count);
    layerCoverage.resize(count);
    forEachRowSlice(box.Height(), [&](int first, int last) {
        for (int32_t y = box.y0 + first; y <= box.y0 + last; ++y) {
            size_t j = static_cast<size_t>(y - box.y0) * box.Width();
            for (int32_t x = box.x0; x < box.x1; ++x, ++j) {
                const size_t i = static_cast<size_t>(y) * frame.width + x;
                const float w = coverageFlat ? 1.0f : layers.Weight(index, i);
                for (int c = 0; c < channels; ++c)
                    layer[c][j] = w * frame.channel[c][i];
                layerCoverage[j] = w;
            }
        }
    });
}

bool DepthCompositeVZ::convolveLayer(FftEngine& engine, const PixelBox& box, int channels, bool coverageFlat)
{
    const int32_t w = box.Width(), h = box.Height();
    for (int c = 0; c <= channels; ++c) {
        if (c == channels && coverageFlat)
            break;  // a whole coverage stays whole
        float* plane = c < channels ? layer[c].data() : layerCoverage.data();
        const FftFloatChannel channel{plane, 1, w};
        if (!engine.ConvolveFloat(channel, channel, w, h, FFT_EDGE_REPEAT))
            return false;
    }
    return true;
}

void DepthCompositeVZ::compositeOver(const PixelBox& box, int32_t width, int channels)
{
    forEachRowSlice(box.Height(), [&](int first, int last) {
        for (int32_t y = box.y0 + first; y <= box.y0 + last; ++y) {
            size_t j = static_cast<size_t>(y - box.y0) * box.Width();
            for (int32_t x = box.x0; x < box.x1; ++x, ++j) {
                const size_t i = static_cast<size_t>(y) * width + x;
                const float a = layerCoverage[j];
                const float rest = 1.0f - a;
                for (int c = 0; c < channels; ++c)
                    behind[c][i] = layer[c][j] + rest * behind[c][i];
                behindCoverage[i] = a + rest * behindCoverage[i];
            }
        }
    });
}

bool DepthCompositeVZ::Render(const DepthFrameVZ& frame, const DepthLayersVZ& layers, DepthKernelsVZ& kernels,
                              PluginVZ* monitor, std::vector<float> result[kDepthChannels], int* status)
{
    *status = FFT_OK;
    const size_t count = frame.PixelCount();
    const int channels = frame.alphaVaries ? kDepthChannels : kDepthAlpha;
    for (int c = 0; c < channels; ++c)
        behind[c].assign(count, 0.0f);
    behindCoverage.assign(count, 0.0f);
    const bool coverageFlat = layers.Count() == 1;
    // Far to near: the farthest layer has the largest signed radius.
    for (int32_t k = layers.Count() - 1; k >= 0; --k) {
        if (layers.Box(k).Empty())
            continue;
        const float radius = std::fabs(layers.SignedRadius(k));
        const bool sharp = !(radius >= kSharpRadius);
        const int32_t reach = sharp ? 0 : static_cast<int32_t>(std::ceil(kernels.Reach(radius))) + 1;
        const PixelBox box = grown(layers.Box(k), reach, frame.width, frame.height);
        if (!sharp)
            completeBehind(box, static_cast<int32_t>(std::ceil(radius)), frame.width, channels);
        takeLayer(frame, layers, k, box, channels, coverageFlat);
        if (!sharp) {
            FftEngine* engine = kernels.Kernel(radius, box.Width(), box.Height(), status);
            if (!engine)
                return false;
            if (!convolveLayer(*engine, box, channels, coverageFlat)) {
                *status = engine->GetStatus();
                return false;
            }
        }
        compositeOver(box, frame.width, channels);
        if (monitor && PluginVZ::ShouldAbort(monitor))
            return false;
    }
    for (int c = 0; c < kDepthChannels; ++c)
        result[c].resize(count);
    forEachRowSlice(frame.height, [&](int first, int last) {
        for (size_t i = static_cast<size_t>(first) * frame.width; i < static_cast<size_t>(last + 1) * frame.width; ++i) {
            const float q = behindCoverage[i];
            for (int c = 0; c < kDepthChannels; ++c)
                result[c][i] = c < channels && q > kLeastCoverage ? behind[c][i] / q : frame.channel[c][i];
        }
    });
    return true;
}
