// The bright-emphasis curve and its inverse.
//
// emphasise presses mid-tones down while keeping 0 and 1 in place, so that bright
// parts weigh more in the blur; deemphasise undoes it exactly. Both return x
// unchanged (not even clamped) when e - 1.0 is below 0.001.
#pragma once

double emphasise(double x, double e);
double deemphasise(double x, double e);
