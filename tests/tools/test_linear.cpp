// Scene-linear renders through the tool: light above 1 kept and spread into
// the aperture, against the point-spread picture and a direct convolution
// worked out here; alpha by each file format's convention; non-finite samples;
// exposure; refusals.
#include <cmath>
#include <numeric>

#include "tool_fixture.h"

namespace {

class Linear : public ToolTest {
protected:
    // A file written or read with its colour as stored: no conversion of alpha
    // on either side (PNG is otherwise associated by the library on the way).
    void writeStored(const std::string& name, const Picture& p) const
    {
        auto out = OIIO::ImageOutput::create(path(name));
        OIIO::ImageSpec layout(p.width, p.height, p.channels, name.ends_with(".png") ? OIIO::TypeDesc::UINT8
                                                                                     : OIIO::TypeDesc::FLOAT);
        layout.attribute("oiio:UnassociatedAlpha", 1);
        ASSERT_TRUE(out && out->open(path(name), layout) && out->write_image(OIIO::TypeDesc::FLOAT, p.data.data()));
        out->close();
    }
    Picture readStored(const std::string& name) const
    {
        OIIO::ImageSpec config, layout;
        config.attribute("oiio:UnassociatedAlpha", 1);
        auto in = OIIO::ImageInput::create(path(name), false, &config);
        const bool opened = in && in->open(path(name), layout, config);
        EXPECT_TRUE(opened) << name;
        if (!opened)
            return {};
        Picture p(layout.width, layout.height, layout.nchannels);
        EXPECT_TRUE(in->read_image(0, 0, 0, p.channels, OIIO::TypeDesc::FLOAT, p.data.data()));
        return p;
    }
    // The --psf picture, normalised to sum 1.
    std::vector<double> kernel(const std::string& name) const
    {
        const Picture psf = readStored(name);
        std::vector<double> k(size_t(psf.width) * psf.height);
        for (size_t i = 0; i < k.size(); ++i)
            k[i] = psf.data[i * psf.channels];
        const double sum = std::accumulate(k.begin(), k.end(), 0.0);
        for (double& v : k)
            v /= sum;
        return k;
    }
    // Opaque black RGBA, a grey spot of `value` at the centre.
    static Picture spot(int w, int h, float value)
    {
        Picture p(w, h, 4);
        for (int i = 0; i < w * h; ++i)
            p.data[i * 4 + 3] = 1.0f;
        for (int c = 0; c < 3; ++c)
            p.at(w / 2, h / 2, c) = value;
        return p;
    }
    static constexpr int W = 64, H = 48;  // a multiple of four rows: the --psf picture is the frame's size
};

TEST_F(Linear, AFloatSpotOfFiftyKeepsItsEnergyAndBecomesThePsfPictureTimesFifty)
{
    writeStored("spot.exr", spot(W, H, 50.0f));
    ASSERT_EQ(run({"render", "spot.exr", "-o", "clipped.exr", "--radius-x", "0.1"}).exitCode, 0);
    const Picture clipped = readStored("clipped.exr");
    EXPECT_LE(*std::max_element(clipped.data.begin(), clipped.data.end()), 1.0f);  // the 16-bit render
    const ToolRun r = run({"render", "spot.exr", "-o", "out.exr", "--linear", "--radius-x", "0.1", "--psf", "psf.png"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const Picture out = readStored("out.exr");
    const std::vector<double> k = kernel("psf.png");
    double sum = 0.0, peak = 0.0;
    for (int i = 0; i < W * H; ++i) {
        ASSERT_NEAR(out.data[i * 4 + 1], 50.0 * k[i], 50.0 * 1e-5) << i % W << "," << i / W;
        sum += out.data[i * 4 + 1], peak = std::max(peak, double(out.data[i * 4 + 1]));
    }
    EXPECT_NEAR(sum, 50.0, 50.0 * 1e-5);
    EXPECT_GT(peak, 1.0);
}

TEST_F(Linear, InputsWithinZeroToOneEqualADirectConvolutionWithThePsfPictureInBothFastEngines)
{
    const int w = 40, h = 32;
    Picture in(w, h, 4);
    for (size_t i = 0; i < in.data.size(); ++i)
        in.data[i] = i % 4 == 3 ? 1.0f : float((i * 2654435761u) >> 22 & 1023) / 1023.0f;
    writeStored("in.exr", in);
    for (const auto& [engine, bound] : {std::pair{"fast", 1e-5}, std::pair{"fast-float", 1e-3}}) {
        const ToolRun r = run({"render", "in.exr", "-o", "out.exr", "--linear", "--engine", engine, "--shape", "polygon",
                               "--sides", "5", "--radius-x", "0.15", "--psf", "psf.png"});
        ASSERT_EQ(r.exitCode, 0) << r.err;
        const Picture out = readStored("out.exr");
        const std::vector<double> k = kernel("psf.png");
        // out(x, y) = sum of k(u, v) in(x - u + w/2, y - v + h/2), edges repeated.
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < 4; ++c) {
                    double want = 0.0;
                    for (int v = 0; v < h; ++v)
                        for (int u = 0; u < w; ++u)
                            if (k[v * w + u] != 0.0)
                                want += k[v * w + u] * in.at(std::clamp(x - u + w / 2, 0, w - 1),
                                                             std::clamp(y - v + h / 2, 0, h - 1), c);
                    ASSERT_NEAR(out.at(x, y, c), want, bound) << engine << " " << x << "," << y << " channel " << c;
                }
    }
}

TEST_F(Linear, ExrAlphaIsAssociatedOnBothSidesPngIsNotAndTheOldWayIsAnOption)
{
    Picture flat(32, 24, 4);  // colour (0.6, 0.4, 0.2) at alpha 0.5, associated
    for (size_t i = 0; i < flat.data.size(); ++i)
        flat.data[i] = i % 4 == 3 ? 0.5f : 0.3f - 0.1f * float(i % 4);
    writeStored("assoc.exr", flat);
    auto colour = [&](const std::string& name) { return readStored(name).at(7, 9, 0); };
    for (const std::vector<std::string>& mode : {std::vector<std::string>{}, {"--linear"}}) {
        for (const char* output : {"out.exr", "out.png"}) {
            std::vector<std::string> args{"render", "assoc.exr", "-o", output};
            args.insert(args.end(), mode.begin(), mode.end());
            ASSERT_EQ(run(args).exitCode, 0);
        }
        EXPECT_NEAR(colour("out.exr"), 0.3f, 2e-4) << mode.size();
        EXPECT_NEAR(readStored("out.exr").at(7, 9, 3), 0.5f, 2e-4);
        EXPECT_NEAR(colour("out.png"), 0.6f, 1.0f / 255) << mode.size();
    }
    ASSERT_EQ(run({"render", "assoc.exr", "-o", "old.png", "--unassociated-alpha"}).exitCode, 0);
    EXPECT_NEAR(colour("old.png"), 0.3f, 1.0f / 255);
    ASSERT_EQ(run({"render", "out.png", "-o", "back.exr", "--linear"}).exitCode, 0);
    EXPECT_NEAR(colour("back.exr"), 0.3f, 1.0f / 255);

    // Red on the left, nothing on the right: blurred as associated light the
    // edge fades in alpha and stays pure red, with no dark fringe.
    Picture half(32, 24, 4);
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 16; ++x)
            half.at(x, y, 0) = half.at(x, y, 3) = 1.0f;
    writeStored("half.exr", half);
    ASSERT_EQ(run({"render", "half.exr", "-o", "soft.exr", "--linear", "--radius-x", "0.15"}).exitCode, 0);
    const Picture soft = readStored("soft.exr");
    for (int x = 10; x < 22; ++x)
        EXPECT_NEAR(soft.at(x, 12, 0), soft.at(x, 12, 3), 1e-5) << x;
    EXPECT_LT(soft.at(16, 12, 3), 0.9f);
}

TEST_F(Linear, NonFiniteSamplesBecomeZeroWithOneWarningLine)
{
    Picture in(32, 24, 4);
    for (size_t i = 0; i < in.data.size(); ++i)
        in.data[i] = 0.5f + 0.4f * std::sin(float(i) * 0.37f);
    Picture zeroed = in;
    zeroed.at(5, 5, 0) = zeroed.at(20, 15, 3) = 0.0f;
    in.at(5, 5, 0) = NAN;
    in.at(20, 15, 3) = INFINITY;
    writeStored("bad.exr", in);
    writeStored("zeroed.exr", zeroed);
    const ToolRun r = run({"render", "bad.exr", "-o", "bad-out.exr", "--linear"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_NE(r.err.find("2 non-finite"), std::string::npos) << r.err;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << r.err;
    ASSERT_EQ(run({"render", "zeroed.exr", "-o", "zeroed-out.exr", "--linear"}).exitCode, 0);
    EXPECT_EQ(readStored("bad-out.exr").data, readStored("zeroed-out.exr").data);
}

TEST_F(Linear, ExposureScalesBeforeTheHighlightCurveAndBackAfterIt)
{
    const double stops = 3.0, e = 20.0, t = 1.0, value = 128.0 / 255.0;  // as 8 bits store it
    writeStored("spot.png", spot(W, H, float(value)));
    const ToolRun r = run({"render", "spot.png", "-o", "out.exr", "--depth", "float", "--linear", "--exposure", "3",
                           "--highlight-emphasis", "20", "--radius-x", "0.1", "--psf", "psf.png"});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    // f(x) = x + (e - 1)(x - t)^2 / (2t) above t; its inverse by the root.
    const double lifted = value * std::exp2(stops);
    const double raised = lifted + (e - 1.0) * (lifted - t) * (lifted - t) / (2.0 * t);
    auto inverse = [&](double y) { return y <= t ? y : t + (std::sqrt(1.0 + 2.0 * (e - 1.0) * (y - t) / t) - 1.0) * t / (e - 1.0); };
    const Picture out = readStored("out.exr");
    const std::vector<double> k = kernel("psf.png");
    for (int i = 0; i < W * H; ++i)
        ASSERT_NEAR(out.data[i * 4], inverse(raised * k[i]) * std::exp2(-stops), 1e-5) << i;
}

TEST_F(Linear, RefusesTheFaithfulEngineOtherHostFormatsBrightEmphasisAndExposureAlone)
{
    writeStored("in.exr", spot(W, H, 2.0f));
    const std::pair<std::vector<std::string>, const char*> refused[] = {
        {{"--linear", "--engine", "faithful"}, "--engine"},
        {{"--linear", "--host-format", "MFIF_RGBA_RAW_32"}, "MFIF_RGBA_FLOAT"},
        {{"--linear", "--bright-emphasis", "5"}, "--highlight-emphasis"},
        {{"--exposure", "1"}, "--linear"},
    };
    for (const auto& [options, hint] : refused) {
        std::vector<std::string> args{"render", "in.exr", "-o", "out.exr"};
        args.insert(args.end(), options.begin(), options.end());
        const ToolRun r = run(args);
        EXPECT_EQ(r.exitCode, 2) << options[1];
        EXPECT_NE(r.err.find(hint), std::string::npos) << r.err;
    }
    EXPECT_EQ(files(), std::vector<std::string>{"in.exr"});
}

}  // namespace
