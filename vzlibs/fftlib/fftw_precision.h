// FFTW's interface by sample type: Fftw<double> is the fftw_ library, Fftw<float>
// the fftwf_ one. The engine's shared passes and plan making are written once,
// over the plane's sample type, and reach FFTW through these.
//
// A plane of `rows` rows of `rowLength` samples has a spectrum of `rows` rows of
// rowLength / 2 + 1 complex samples (FFTW's 2-D r2c layout: the first size
// given to the planner is the number of rows).
#pragma once

#include <fftw3.h>

#include <cstddef>
#include <cstdio>

// Which of FFTW's libraries; each has its own threads and its own wisdom.
enum FftwPrecision : int {
    FFTW_PRECISION_DOUBLE = 0,
    FFTW_PRECISION_SINGLE = 1,
};
constexpr int FFTW_PRECISION_COUNT = 2;

template <typename Real> struct Fftw;

template <> struct Fftw<double> {
    using Complex = fftw_complex;
    using Plan = fftw_plan;
    static constexpr FftwPrecision precision = FFTW_PRECISION_DOUBLE;

    static Plan planForward(int rows, int rowLength, double* in, Complex* out, unsigned flags)
    {
        return fftw_plan_dft_r2c_2d(rows, rowLength, in, out, flags);
    }
    static Plan planInverse(int rows, int rowLength, Complex* in, double* out, unsigned flags)
    {
        return fftw_plan_dft_c2r_2d(rows, rowLength, in, out, flags);
    }
    static void planWithThreads(int count) { fftw_plan_with_nthreads(count); }
    static void execute(Plan plan) { fftw_execute(plan); }
    static void destroy(Plan plan) { fftw_destroy_plan(plan); }
    static void* allocate(size_t bytes) { return fftw_malloc(bytes); }
    static void release(void* block) { fftw_free(block); }
    static bool importWisdom(FILE* file) { return fftw_import_wisdom_from_file(file) != 0; }
    static void exportWisdom(FILE* file) { fftw_export_wisdom_to_file(file); }
    static bool initThreads() { return fftw_init_threads() != 0; }
    static void cleanupThreads() { fftw_cleanup_threads(); }
};

template <> struct Fftw<float> {
    using Complex = fftwf_complex;
    using Plan = fftwf_plan;
    static constexpr FftwPrecision precision = FFTW_PRECISION_SINGLE;

    static Plan planForward(int rows, int rowLength, float* in, Complex* out, unsigned flags)
    {
        return fftwf_plan_dft_r2c_2d(rows, rowLength, in, out, flags);
    }
    static Plan planInverse(int rows, int rowLength, Complex* in, float* out, unsigned flags)
    {
        return fftwf_plan_dft_c2r_2d(rows, rowLength, in, out, flags);
    }
    static void planWithThreads(int count) { fftwf_plan_with_nthreads(count); }
    static void execute(Plan plan) { fftwf_execute(plan); }
    static void destroy(Plan plan) { fftwf_destroy_plan(plan); }
    static void* allocate(size_t bytes) { return fftwf_malloc(bytes); }
    static void release(void* block) { fftwf_free(block); }
    static bool importWisdom(FILE* file) { return fftwf_import_wisdom_from_file(file) != 0; }
    static void exportWisdom(FILE* file) { fftwf_export_wisdom_to_file(file); }
    static bool initThreads() { return fftwf_init_threads() != 0; }
    static void cleanupThreads() { fftwf_cleanup_threads(); }
};
