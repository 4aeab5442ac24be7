// A Lumenveil with frames of its own, parameters set as the execute path would,
// and reads of the result.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "effect/Lumenveil.h"
#include "generic/library/VZImage.h"

class RenderFixture : public ::testing::Test {
protected:
    void SetUp() override
    {
        fx.shape.value = SHAPE_CIRCLE;
        fx.matchRadii.value = 1;
        fx.radiusX.value = fx.radiusY.value = 0.05;
        fx.sides.value = 6;
        fx.rotation.value = 0.0;
        fx.brightEmphasis.value = 1.0;
        fx.centre.x = fx.centre.y = 0.5;
        fx.radiusPsf1.value = 0.1;
        fx.radiusPsf2.value = 0.2;
    }

    // New black input (alpha opaque), output and, if asked, spread frames.
    void frames(int w, int h, bool withSpread = false)
    {
        in = blank(w, h);
        out = blank(w, h);
        spread = withSpread ? blank(w, h) : nullptr;
    }
    static std::unique_ptr<VZImage> blank(int w, int h)
    {
        auto frame = std::make_unique<VZImage>(w, h, 0, nullptr, 0u);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c)
                    frame->rows[y][x * 4 + c] = c == 3 ? 32767 : 0;
        return frame;
    }
    static void dot(VZImage& frame, int x, int y, uint16_t level = 32767)
    {
        for (int c = 0; c < 3; ++c)
            frame.rows[y][x * 4 + c] = level;
    }
    void render()
    {
        fx.input.image = in.get();
        fx.output.image = out.get();
        fx.spread.image = spread.get();
        fx.Render();
    }
    uint32_t builds() const { return fx.engine->kernelsPrepared; }
    uint16_t at(const VZImage& frame, int x, int y, int c = 0) const { return frame.rows[y][x * 4 + c]; }

    Lumenveil fx;
    std::unique_ptr<VZImage> in, out, spread;
};
