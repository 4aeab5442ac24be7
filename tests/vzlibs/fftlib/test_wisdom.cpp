// Measured planning and the wisdom file, switched by VZ_USE_FFTW_WISDOM.
#include <fftw3.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

#include "engine_test_support.h"
#include "vzlibs/baselib/machine.h"
#include "vzlibs/fftlib/FftEngine.h"

namespace {

namespace fs = std::filesystem;
using enginetest::Image;

// A home directory of its own with a Settings folder, VZ_HOME_DIR pointing at it,
// FFTW's wisdom forgotten; the variables are given back at the end.
class WisdomTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (int i = 0; i < 2; ++i) {
            const char* value = std::getenv(kNames[i]);
            had[i] = value != nullptr;
            saved[i] = value ? value : "";
        }
        char dir[] = "/tmp/vzwisdomXXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        home = dir;
        settings = home / "Settings";
        fs::create_directory(settings);
        file = settings / "fftw3_wisdom_vz.dat";
        setenv("VZ_HOME_DIR", home.c_str(), 1);
        fftw_forget_wisdom();
    }
    void TearDown() override
    {
        for (int i = 0; i < 2; ++i) {
            if (had[i])
                setenv(kNames[i], saved[i].c_str(), 1);
            else
                unsetenv(kNames[i]);
        }
        fftw_forget_wisdom();
        std::error_code ignored;
        fs::remove_all(home, ignored);
    }

    static std::string contents(const fs::path& path)
    {
        std::ifstream in(path);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    static void put(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

    // One frame through an engine: a 20 x 20 frame with margin 4 gives S = 32.
    struct Frame {
        Image psf, input, output;
        Frame() : psf(blank()), input(20, 20, 4, IMAGE_U16), output(20, 20, 4, IMAGE_U16)
        {
            std::mt19937 rng(7);
            std::uniform_int_distribution<uint32_t> sample(0, 65535);
            for (int y = 0; y < 20; ++y)
                for (int x = 0; x < 20; ++x)
                    for (int c = 0; c < 4; ++c)
                        input.set(x, y, c, sample(rng));
            std::memcpy(output.rec->pixels, input.rec->pixels, static_cast<size_t>(input.rec->rowBytes) * 20);
            auto* p = static_cast<uint8_t*>(psf.rec->pixels);
            for (int dy = -2; dy <= 2; ++dy)
                for (int dx = -2; dx <= 2; ++dx)
                    p[(10 + dy) * 20 + 10 + dx] = static_cast<uint8_t>(100 + 10 * dx + dy);
        }
        static ImageRec* blank() { return enginetest::blankPsf(20, 20); }
    };
    static bool prepare(FftEngine& engine, Frame& frame) { return engine.PrepareKernel(frame.psf.rec, 4); }
    static bool run(FftEngine& engine, Frame& frame)
    {
        return engine.SetInput(frame.input.rec) && engine.Run(frame.output.rec, 7);
    }

    // True if FFTW holds measured wisdom for the engine's transforms of side S.
    static bool measuredWisdomFor(int S)
    {
        double* real = fftw_alloc_real(static_cast<size_t>(S) * S);
        fftw_complex* spectrum = fftw_alloc_complex(static_cast<size_t>(S) * (S / 2 + 1));
        fftw_plan_with_nthreads(get_processor_count());
        const unsigned flags = FFTW_MEASURE | FFTW_WISDOM_ONLY;
        fftw_plan forward = fftw_plan_dft_r2c_2d(S, S, real, spectrum, flags);
        fftw_plan inverse = fftw_plan_dft_c2r_2d(S, S, spectrum, real, flags);
        const bool both = forward && inverse;
        if (forward)
            fftw_destroy_plan(forward);
        if (inverse)
            fftw_destroy_plan(inverse);
        fftw_free(real);
        fftw_free(spectrum);
        return both;
    }

    static constexpr const char* kNames[2] = {"VZ_HOME_DIR", "VZ_USE_FFTW_WISDOM"};
    bool had[2] = {};
    std::string saved[2];
    fs::path home, settings, file;
};

TEST_F(WisdomTest, VariableIsReadAtConstructionAndAnEmptyValueCounts)
{
    unsetenv("VZ_USE_FFTW_WISDOM");
    FftEngine plain;
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    FftEngine empty;
    setenv("VZ_USE_FFTW_WISDOM", "0", 1);
    FftEngine zero;
    EXPECT_EQ(plain.useWisdom, 0u);
    EXPECT_EQ(empty.useWisdom, 1u);
    EXPECT_EQ(zero.useWisdom, 1u);  // presence is what counts, not the value
    EXPECT_EQ(empty.wisdomLoaded, 0u);
}

TEST_F(WisdomTest, ThreeMeasuredPlansWriteTheFileFromTheFirstOn)
{
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    Frame measured;
    {
        FftEngine engine;
        ASSERT_TRUE(prepare(engine, measured));
        EXPECT_EQ(engine.plansMade, 1u);
        EXPECT_EQ(engine.wisdomLoaded, 0u);  // there was no file to read
        ASSERT_TRUE(fs::exists(file));
        EXPECT_GT(fs::file_size(file), 0u);
        ASSERT_TRUE(run(engine, measured));
        EXPECT_EQ(engine.plansMade, 3u);
        EXPECT_TRUE(measuredWisdomFor(engine.paddedWidth));
    }

    // Measuring scribbles over the planes; the frame must come out as planned
    // the quick way.
    unsetenv("VZ_USE_FFTW_WISDOM");
    fftw_forget_wisdom();
    Frame estimated;
    FftEngine engine;
    ASSERT_TRUE(prepare(engine, estimated));
    ASSERT_TRUE(run(engine, estimated));
    EXPECT_FALSE(measuredWisdomFor(engine.paddedWidth));
    int worst = 0;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            for (int c = 0; c < 3; ++c)
                worst = std::max(worst, std::abs(static_cast<int>(measured.output.get(x, y, c)) -
                                                 static_cast<int>(estimated.output.get(x, y, c))));
    EXPECT_LE(worst, 1);
}

TEST_F(WisdomTest, FileCarriesThePlansToTheNextStart)
{
    setenv("VZ_USE_FFTW_WISDOM", "1", 1);
    {
        Frame frame;
        FftEngine engine;
        ASSERT_TRUE(prepare(engine, frame));
        ASSERT_TRUE(run(engine, frame));
    }
    fftw_forget_wisdom();  // a new start knows nothing but the file
    const std::string written = contents(file);
    ASSERT_FALSE(written.empty());

    Frame frame;
    FftEngine engine;
    EXPECT_FALSE(measuredWisdomFor(32));
    ASSERT_TRUE(prepare(engine, frame));
    EXPECT_EQ(engine.wisdomLoaded, 1u);
    EXPECT_TRUE(measuredWisdomFor(engine.paddedWidth));
}

TEST_F(WisdomTest, BadFileIsRefusedAndTheReadTriedAgain)
{
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    put(file, "this is not wisdom\n");
    Frame frame;
    FftEngine engine;
    ASSERT_TRUE(prepare(engine, frame));  // planning goes on without it
    EXPECT_EQ(engine.wisdomLoaded, 0u);
    // The plan made meanwhile was saved over the bad file, so the next read,
    // before the next plan, takes.
    EXPECT_NE(contents(file), "this is not wisdom\n");
    ASSERT_TRUE(run(engine, frame));
    EXPECT_EQ(engine.wisdomLoaded, 1u);
    EXPECT_EQ(engine.plansMade, 3u);
}

TEST_F(WisdomTest, WithoutTheVariableNothingIsReadOrWritten)
{
    unsetenv("VZ_USE_FFTW_WISDOM");
    {
        Frame frame;
        FftEngine engine;
        ASSERT_TRUE(prepare(engine, frame));
        ASSERT_TRUE(run(engine, frame));
        EXPECT_EQ(engine.plansMade, 3u);
    }
    EXPECT_FALSE(fs::exists(file));

    // A file that is there is left alone, good or bad.
    put(file, "left alone\n");
    {
        Frame frame;
        FftEngine engine;
        ASSERT_TRUE(prepare(engine, frame));
        ASSERT_TRUE(run(engine, frame));
        EXPECT_EQ(engine.wisdomLoaded, 0u);
    }
    EXPECT_EQ(contents(file), "left alone\n");
}

TEST_F(WisdomTest, MissingSettingsDirectoryIsNoFailure)
{
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    fs::remove(settings);
    Frame frame;
    {
        FftEngine engine;
        ASSERT_TRUE(prepare(engine, frame));
        ASSERT_TRUE(run(engine, frame));
        EXPECT_EQ(engine.wisdomLoaded, 0u);
    }
    EXPECT_FALSE(fs::exists(settings));  // the engine creates no directory
}

}  // namespace
