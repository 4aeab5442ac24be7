// The planes and plans of one precision as one set of references, so that the
// engine's passes and plan making are written once over the plane's sample type:
// planesOf<double> gives FftEngine's own fields, planesOf<float> those of its
// FftSinglePlanes. Internal to the engine's sources.
#pragma once

#include "vzlibs/fftlib/FftEngine.h"
#include "vzlibs/fftlib/fftw_precision.h"

template <typename Real> struct FftPlanes {
    using Complex = typename Fftw<Real>::Complex;
    using Plan = typename Fftw<Real>::Plan;

    Plan& kernelForwardPlan;
    Plan& workForwardPlan;
    Plan& workInversePlan;
    Real*& kernelReal;
    Complex*& kernelSpectrum;
    Real*& workReal;
    Complex*& workSpectrum;
    Real*& lumaPlane;
    Real*& chromaAPlane;
    Real*& chromaBPlane;
    Real*& jobBuffer;
};

template <typename Real> FftPlanes<Real> planesOf(FftEngine& engine);

template <> inline FftPlanes<double> planesOf<double>(FftEngine& e)
{
    return {e.kernelForwardPlan, e.workForwardPlan, e.workInversePlan, e.kernelReal, e.kernelSpectrum, e.workReal,
            e.workSpectrum,      e.lumaPlane,       e.chromaAPlane,    e.chromaBPlane, e.jobBuffer};
}

template <> inline FftPlanes<float> planesOf<float>(FftEngine& e)
{
    FftSinglePlanes& s = e.single;
    return {s.kernelForwardPlan, s.workForwardPlan, s.workInversePlan, s.kernelReal, s.kernelSpectrum, s.workReal,
            s.workSpectrum,      s.lumaPlane,       s.chromaAPlane,    s.chromaBPlane, s.jobBuffer};
}
