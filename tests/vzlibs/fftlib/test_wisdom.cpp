// Measured planning and the wisdom file, switched by VZ_USE_FFTW_WISDOM.
#include <fftw3.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "engine_test_support.h"
#include "vzlibs/baselib/machine.h"
#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/fftw_precision.h"

namespace {

namespace fs = std::filesystem;
using enginetest::Image;
using enginetest::SavedVariable;

// A random 20 x 20 frame with margin 4 (transforms of side 32) and a 5 x 5 kernel.
struct Frame {
    std::mt19937 rng{7};
    Image psf{enginetest::randomPsf(20, 20, 2, rng)};
    Image input{20, 20, 4, IMAGE_U16}, output{20, 20, 4, IMAGE_U16};
    Frame()
    {
        auto* bytes = static_cast<uint8_t*>(input.rec->pixels);
        std::generate_n(bytes, input.rec->rowBytes * 20, [this] { return static_cast<uint8_t>(rng()); });
        std::memcpy(output.rec->pixels, bytes, static_cast<size_t>(input.rec->rowBytes) * 20);
    }
    bool prepare(FftEngine& engine) { return engine.PrepareKernel(psf.rec, 4); }  // the first plan
    bool run(FftEngine& engine) { return engine.SetInput(input.rec) && engine.Run(output.rec, 7); }  // two more
    bool both(FftEngine& engine) { return prepare(engine) && run(engine); }
};

// True if the FFTW library of sample type Real holds measured wisdom for the
// engine's transforms of `rows` rows of `rowLength` samples.
template <typename Real> bool measuredWisdomFor(int rows, int rowLength)
{
    using F = Fftw<Real>;
    Real* real = static_cast<Real*>(F::allocate(sizeof(Real) * rows * rowLength));
    auto* spectrum = static_cast<typename F::Complex*>(F::allocate(sizeof(typename F::Complex) * rows * (rowLength / 2 + 1)));
    F::planWithThreads(get_processor_count());
    typename F::Plan forward = F::planForward(rows, rowLength, real, spectrum, FFTW_MEASURE | FFTW_WISDOM_ONLY);
    typename F::Plan inverse = F::planInverse(rows, rowLength, spectrum, real, FFTW_MEASURE | FFTW_WISDOM_ONLY);
    const bool both = forward && inverse;
    for (typename F::Plan plan : {forward, inverse})
        if (plan)
            F::destroy(plan);
    F::release(real);
    F::release(spectrum);
    return both;
}

std::string contents(const fs::path& path)
{
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

// A home directory of its own with a Settings folder, VZ_HOME_DIR pointing at
// it and FFTW's wisdom forgotten; both variables are given back at the end.
class WisdomTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char dir[] = "/tmp/vzwisdomXXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        home = dir;
        fs::create_directory(home / "Settings");
        file = home / "Settings" / "fftw3_wisdom_vz.dat";
        setenv("VZ_HOME_DIR", dir, 1);
        unsetenv("VZ_FFT_MODE");
        // The single-precision planner is left alone: only engines touch it, and
        // the last one to go leaves it pristine. Touching it first would make it
        // without its thread solvers, and the wisdom it writes unreadable by a
        // planner made with them.
        fftw_forget_wisdom();
    }
    void TearDown() override
    {
        fftw_forget_wisdom();
        std::error_code ignored;
        fs::remove_all(home, ignored);
    }
    SavedVariable savedHome{"VZ_HOME_DIR"}, savedWisdom{"VZ_USE_FFTW_WISDOM"}, savedMode{"VZ_FFT_MODE"};
    fs::path home, file;
};

TEST_F(WisdomTest, EmptyVariableMakesThreeMeasuredPlansAndWritesTheFileFromTheFirst)
{
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    Frame measured;
    {
        FftEngine engine;
        ASSERT_TRUE(measured.prepare(engine));
        EXPECT_EQ(engine.wisdomLoaded, 0u);  // there was no file to read
        EXPECT_TRUE(fs::exists(file));
        ASSERT_TRUE(measured.run(engine));
        EXPECT_EQ(engine.plansMade, 3u);
        EXPECT_TRUE(measuredWisdomFor<double>(engine.paddedWidth, engine.paddedWidth));
    }
    // Measuring scribbles over the planes; the frame must come out as planned
    // the quick way.
    unsetenv("VZ_USE_FFTW_WISDOM");
    fftw_forget_wisdom();
    Frame estimated;
    FftEngine engine;
    ASSERT_TRUE(estimated.both(engine));
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 20; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_NEAR(measured.output.get(x, y, c), estimated.output.get(x, y, c), 1) << x << "," << y;
}

TEST_F(WisdomTest, BadFileIsRefusedAndTheReadTriedAgainAtTheNextPlan)
{
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    std::ofstream(file) << "this is not wisdom\n";
    Frame frame;
    FftEngine engine;
    ASSERT_TRUE(frame.prepare(engine));  // planning goes on without it
    EXPECT_EQ(engine.wisdomLoaded, 0u);
    // The plan made meanwhile was saved over the bad file, so the next read takes.
    EXPECT_NE(contents(file), "this is not wisdom\n");
    ASSERT_TRUE(frame.run(engine));
    EXPECT_EQ(engine.wisdomLoaded, 1u);
}

TEST_F(WisdomTest, WithoutTheVariableNothingIsReadOrWritten)
{
    unsetenv("VZ_USE_FFTW_WISDOM");
    for (const char* left : {"", "left alone\n"}) {  // no file, then a file that must stay as it is
        if (*left)
            std::ofstream(file) << left;
        Frame frame;
        auto engine = std::make_unique<FftEngine>();
        ASSERT_TRUE(frame.both(*engine));
        EXPECT_EQ(engine->wisdomLoaded, 0u);
        engine.reset();  // the destructor saves too, when it may
        EXPECT_EQ(fs::exists(file), *left != 0);
        EXPECT_EQ(contents(file), left);
    }
}

TEST_F(WisdomTest, FastModesMeasureAndKeepWisdomInTheFileOfTheirPrecision)
{
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    const fs::path singleFile = home / "Settings" / "fftw3f_wisdom_vz.dat";
    Frame frame;  // 20 + 2 x 4 = 28 = 2^2 x 7 on both sides
    {
        FftEngine single(FFT_MODE_FAST_FLOAT);
        ASSERT_TRUE(frame.both(single));
        EXPECT_EQ(single.plansMade, 3u);
        EXPECT_TRUE(measuredWisdomFor<float>(28, 28));
        EXPECT_TRUE(fs::exists(singleFile));
        EXPECT_FALSE(fs::exists(file));  // the double planner's file is not this one's
    }
    FftEngine again(FFT_MODE_FAST_FLOAT);  // a new start reads its own file
    ASSERT_TRUE(frame.prepare(again));
    EXPECT_EQ(again.wisdomLoaded, 1u);

    FftEngine fast(FFT_MODE_FAST);
    ASSERT_TRUE(frame.both(fast));
    EXPECT_TRUE(measuredWisdomFor<double>(28, 28));
    EXPECT_TRUE(fs::exists(file));
}

}  // namespace

namespace {

TEST_F(WisdomTest, AnEngineGoingKeepsTheWisdomOfThoseThatStay)
{
    // FFTW's process-wide clean-up, which forgets all wisdom, waits for the last
    // live engine.
    setenv("VZ_USE_FFTW_WISDOM", "", 1);
    Frame frame;
    FftEngine stays;
    ASSERT_TRUE(frame.both(stays));
    ASSERT_TRUE(measuredWisdomFor<double>(stays.paddedWidth, stays.paddedWidth));
    { FftEngine goes; }
    EXPECT_TRUE(measuredWisdomFor<double>(stays.paddedWidth, stays.paddedWidth));
}

}  // namespace
