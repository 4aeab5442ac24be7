// The highlight curve of scene-linear renders and its inverse.
//
// Where the bright-emphasis curve works on 0 to 1, this one works on light
// that may be far above 1: it is the identity up to a threshold t and bends
// upward beyond it,
//
//     f(x) = x + (e - 1) (x - t)^2 / (2 t)                    for x > t,
//
// with its slope 1 at t (so the curve is smooth there) and e at 2 t. Its
// inverse, in the form that keeps its precision near t,
//
//     f^-1(y) = t + 2 (y - t) / (1 + sqrt(1 + 2 (e - 1) (y - t) / t))   for y > t.
//
// An emphasis e of 1 (or any below 1.001) is the identity. The threshold is
// above 0.
#pragma once

#include <cstddef>

// Emphasis values at or below this are no emphasis at all.
inline constexpr double kHighlightEmphasisOff = 1.001;

// Rec. 709 luminance weights of linear R, G and B.
inline constexpr double kLuminanceRed = 0.2126;
inline constexpr double kLuminanceGreen = 0.7152;
inline constexpr double kLuminanceBlue = 0.0722;

double highlight_curve(double x, double e, double t);
double highlight_inverse(double y, double e, double t);

// Emphasises `count` pixels of R G B A floats (colour premultiplied or not):
// a pixel whose luminance L lies above t has its colour multiplied by
// f(L) / L, so that its luminance becomes f(L) and its hue stays. Alpha is
// left as it is.
void highlight_emphasise_pixels(float* rgba, size_t count, double e, double t);
// The inverse: a pixel whose luminance L lies above t has its colour
// multiplied by f^-1(L) / L. Undoes highlight_emphasise_pixels exactly, to
// float rounding, on an unblurred frame.
void highlight_deemphasise_pixels(float* rgba, size_t count, double e, double t);
