#include "tools/lumenveil/demo_scene.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr float kPi = 3.14159265358979f;

// A small deterministic generator, so the scene is the same on every run.
class SceneRandom {
public:
    float Next()
    {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        return static_cast<float>(state >> 40) / static_cast<float>(1u << 24);
    }
    float Between(float low, float high) { return low + (high - low) * Next(); }

private:
    uint64_t state = 0x1EAF5EEDull;
};

ImageFrame blank(int width, int height)
{
    ImageFrame frame;
    frame.width = width;
    frame.height = height;
    frame.channels = 3;
    frame.depth = SampleDepth::U8;
    frame.rgba.assign(static_cast<size_t>(width) * height * 4, 0.0f);
    for (size_t i = 3; i < frame.rgba.size(); i += 4)
        frame.rgba[i] = 1.0f;
    return frame;
}

void fillRect(ImageFrame& f, int x0, int y0, int x1, int y1, const float colour[3])
{
    for (int y = std::max(0, y0); y < std::min(f.height, y1); ++y)
        for (int x = std::max(0, x0); x < std::min(f.width, x1); ++x)
            std::copy(colour, colour + 3, f.Pixel(x, y));
}

// A light: a disc of `radius` with a soft edge, added to what is there,
// `level` times its colour; with no level given, limited to 1.
void addLight(ImageFrame& f, float cx, float cy, float radius, const float colour[3], float level = 0.0f)
{
    const int reach = static_cast<int>(radius) + 2;
    for (int y = static_cast<int>(cy) - reach; y <= static_cast<int>(cy) + reach; ++y)
        for (int x = static_cast<int>(cx) - reach; x <= static_cast<int>(cx) + reach; ++x) {
            if (x < 0 || y < 0 || x >= f.width || y >= f.height)
                continue;
            const float d = std::hypot(x + 0.5f - cx, y + 0.5f - cy);
            const float w = std::clamp(radius + 0.5f - d, 0.0f, 1.0f);
            float* p = f.Pixel(x, y);
            for (int c = 0; c < 3; ++c)
                p[c] = level > 0.0f ? p[c] + w * colour[c] * level : std::min(1.0f, p[c] + w * colour[c]);
        }
}

// Sets `depth` (width a row) over a rectangle, clipped to the frame.
void fillDepth(std::vector<float>* depth, int width, int height, int x0, int y0, int x1, int y1, float value)
{
    for (int y = std::max(0, y0); depth && y < std::min(height, y1); ++y)
        for (int x = std::max(0, x0); x < std::min(width, x1); ++x)
            (*depth)[static_cast<size_t>(y) * width + x] = value;
}

}  // namespace

ImageFrame makeNightScene(int width, int height, bool lightLevels, std::vector<float>* depth)
{
    // Scene-linear levels of the lights: the street lamps, and the others
    // spread over 4 to 40 by their index (no draw of the generator, so that
    // the scene stays the same).
    constexpr float kLampLevel = 24.0f, kLowLevel = 4.0f, kHighLevel = 40.0f;
    auto levelOf = [&](int i) {
        return lightLevels ? kLowLevel + (kHighLevel - kLowLevel) * static_cast<float>(i * 37 % 60) / 59.0f : 0.0f;
    };
    ImageFrame f = blank(width, height);
    SceneRandom random;
    // The distances come from a generator of their own: the picture is the
    // same with and without them.
    SceneRandom distances;
    if (depth)
        depth->assign(static_cast<size_t>(width) * height, 0.0f);
    // Sky: deep blue at the top to near black at the horizon.
    for (int y = 0; y < height; ++y) {
        const float t = static_cast<float>(y) / height;
        const float sky[3] = {0.02f + 0.03f * t, 0.03f + 0.04f * t, 0.12f - 0.08f * t};
        fillRect(f, 0, y, width, y + 1, sky);
    }
    // Buildings with a few lit windows.
    for (int x = 0; x < width;) {
        const int w = static_cast<int>(random.Between(0.06f, 0.14f) * width);
        const int top = static_cast<int>(random.Between(0.25f, 0.6f) * height);
        const float shade = random.Between(0.04f, 0.09f);
        const float wall[3] = {shade, shade, shade * 1.1f};
        fillRect(f, x, top, x + w, height, wall);
        fillDepth(depth, width, height, x, top, x + w, height, distances.Between(12.0f, 60.0f));
        for (int wy = top + 6; wy < height - 8; wy += 12)
            for (int wx = x + 4; wx < x + w - 6; wx += 10)
                if (random.Next() < 0.3f) {
                    const float warm[3] = {0.55f, 0.42f, 0.2f};
                    fillRect(f, wx, wy, wx + 4, wy + 5, warm);
                }
        x += w + 2;
    }
    // Street: a dark band with a line of lamps, and scattered lights of several colours.
    const float street[3] = {0.03f, 0.03f, 0.035f};
    fillRect(f, 0, height * 4 / 5, width, height, street);
    for (int y = height * 4 / 5; depth && y < height; ++y) {
        const float t = static_cast<float>(height - 1 - y) / (height - 1 - height * 4 / 5);
        fillDepth(depth, width, height, 0, y, width, y + 1, 2.0f + 10.0f * t);
    }
    const float palette[][3] = {{1.0f, 0.85f, 0.55f}, {1.0f, 0.3f, 0.2f}, {0.35f, 0.6f, 1.0f},
                                {0.4f, 1.0f, 0.5f},   {1.0f, 1.0f, 1.0f}, {1.0f, 0.5f, 0.9f}};
    for (int i = 0; i < 10; ++i)
        addLight(f, (i + 0.5f) * width / 10.0f, height * 0.78f, 2.5f, palette[0], lightLevels ? kLampLevel : 0.0f);
    for (int i = 0; i < 60; ++i) {
        const float* colour = palette[static_cast<int>(random.Next() * 6) % 6];
        addLight(f, random.Between(0, width), random.Between(0.3f, 0.95f) * height, random.Between(0.6f, 3.5f),
                 colour, levelOf(i));
    }
    return f;
}

void toneMap(ImageFrame& frame, float knee)
{
    const float span = 1.0f - knee;
    for (size_t i = 0; i < frame.rgba.size(); ++i)
        if (i % 4 != 3 && frame.rgba[i] > knee)
            frame.rgba[i] = knee + span * (1.0f - std::exp(-(frame.rgba[i] - knee) / span));
}

ImageFrame makeStarAperture(int width, int height, float radius)
{
    ImageFrame f = blank(width, height);
    const float cx = width / 2.0f, cy = height / 2.0f;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const float dx = x + 0.5f - cx, dy = y + 0.5f - cy;
            const float d = std::hypot(dx, dy);
            if (d > radius)
                continue;
            // The star's edge radius at this angle: between the inner and outer points.
            const float angle = std::atan2(dy, dx) + kPi / 2;
            const float sector = std::fmod(angle + 4 * kPi, 2 * kPi / 5) / (2 * kPi / 5);
            const float edge = radius * (0.45f + 0.55f * std::fabs(1.0f - 2.0f * sector));
            if (d <= edge) {
                float* p = f.Pixel(x, y);
                p[0] = p[1] = p[2] = 1.0f;
            }
        }
    return f;
}
