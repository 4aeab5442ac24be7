// Measured planning and the wisdom files, switched by VZ_USE_FFTW_WISDOM.
#include <fftw3.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "engine_test_support.h"
#include "vzlibs/baselib/machine.h"

namespace {

namespace fs = std::filesystem;
using enginetest::Image;

// A random 20 x 20 frame with margin 4 (sides 28 in the fast modes, 32 in
// mode 4) and a 5 x 5 kernel.
struct Frame {
    std::mt19937 rng{7};
    Image psf{enginetest::randomPsf(20, 20, 2, rng)};
    Image input{20, 20, 4, IMAGE_U16}, output{20, 20, 4, IMAGE_U16};
    Frame() { enginetest::randomise(input, rng); }
    bool prepare(FftEngine& engine) { return engine.PrepareKernel(psf.rec, 4); }  // the first plan
    bool run(FftEngine& engine) { return engine.SetInput(input.rec) && engine.Run(output.rec, 7); }  // two more
    bool both(FftEngine& engine) { return prepare(engine) && run(engine); }
};

// True if the FFTW library of sample type Real holds measured wisdom for the
// engine's transforms of side x side samples.
template <typename Real> bool measuredWisdomFor(int side)
{
    using F = Fftw<Real>;
    Real* real = static_cast<Real*>(F::allocate(sizeof(Real) * side * side));
    auto* spectrum = static_cast<typename F::Complex*>(F::allocate(sizeof(typename F::Complex) * side * (side / 2 + 1)));
    F::planWithThreads(get_processor_count());
    const typename F::Plan plans[] = {F::planForward(side, side, real, spectrum, FFTW_MEASURE | FFTW_WISDOM_ONLY),
                                      F::planInverse(side, side, spectrum, real, FFTW_MEASURE | FFTW_WISDOM_ONLY)};
    for (typename F::Plan plan : plans)
        if (plan)
            F::destroy(plan);
    F::release(real);
    F::release(spectrum);
    return plans[0] && plans[1];
}

std::string contents(const fs::path& path)
{
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

// A home directory of its own with a Settings folder, VZ_HOME_DIR pointing at
// it, wisdom switched on and FFTW's wisdom forgotten; the variables are given
// back at the end.
class WisdomTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        char dir[] = "/tmp/vzwisdomXXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        fs::create_directory((home = dir) / "Settings");
        setenv("VZ_HOME_DIR", dir, 1);
        setenv("VZ_USE_FFTW_WISDOM", "", 1);  // any value, even empty
        unsetenv("VZ_FFT_MODE");
        // Only the double planner is reset: touching the single one before an
        // engine would make it without its thread solvers, and the wisdom it
        // writes unreadable by a planner made with them.
        fftw_forget_wisdom();
    }
    void TearDown() override
    {
        fftw_forget_wisdom();
        fs::remove_all(home);
    }
    enginetest::SavedVariable savedHome{"VZ_HOME_DIR"}, savedWisdom{"VZ_USE_FFTW_WISDOM"}, savedMode{"VZ_FFT_MODE"};
    fs::path home;
    fs::path doubleFile() const { return home / "Settings" / "fftw3_wisdom_vz.dat"; }
};

TEST_F(WisdomTest, MeasuredPlansAndTheFileOfTheModesPrecisionOnlyWithTheVariableAndWisdomKeptForEnginesThatStay)
{
    Frame measured;
    {
        FftEngine engine;
        ASSERT_TRUE(measured.prepare(engine));
        EXPECT_EQ(engine.wisdomLoaded, 0u);  // there was no file to read
        EXPECT_TRUE(fs::exists(doubleFile()));
        ASSERT_TRUE(measured.run(engine));
        EXPECT_EQ(engine.plansMade, 3u);
        // FFTW's process-wide clean-up, which forgets all wisdom, waits for the
        // last live engine.
        { FftEngine goes; }
        EXPECT_TRUE(measuredWisdomFor<double>(32));
    }
    // Without the variable the file is neither read nor written. Measuring
    // scribbles over the planes; the frame must come out as planned the quick way.
    const std::string written = contents(doubleFile());
    unsetenv("VZ_USE_FFTW_WISDOM");
    fftw_forget_wisdom();
    Frame estimated;
    {
        FftEngine engine;
        ASSERT_TRUE(estimated.both(engine));
        EXPECT_EQ(engine.wisdomLoaded, 0u);
    }
    EXPECT_EQ(contents(doubleFile()), written);
    estimated.output.each([&](int x, int y, int c) {
        ASSERT_TRUE(c == 3 || std::abs(int(measured.output.get(x, y, c)) - int(estimated.output.get(x, y, c))) <= 1);
    });
    // The single-precision mode measures too, into a file of its own, which a
    // new start reads; the fast double mode measures into the double one.
    setenv("VZ_USE_FFTW_WISDOM", "1", 1);
    fs::remove(doubleFile());
    {
        FftEngine single(FFT_MODE_FAST_FLOAT);
        ASSERT_TRUE(estimated.both(single));
        EXPECT_TRUE(measuredWisdomFor<float>(28));
        EXPECT_FALSE(fs::exists(doubleFile()));
    }
    FftEngine again(FFT_MODE_FAST_FLOAT), fast(FFT_MODE_FAST);
    ASSERT_TRUE(estimated.prepare(again) && estimated.both(fast));
    EXPECT_EQ(again.wisdomLoaded, 1u);
    EXPECT_TRUE(fs::exists(home / "Settings" / "fftw3f_wisdom_vz.dat") && measuredWisdomFor<double>(28));
}

}  // namespace
