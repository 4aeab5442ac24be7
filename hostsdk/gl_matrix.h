// GlMatrix: a 4 x 4 transform of the drawing layer, stored by rows, applied to
// column vectors (so A * B applies B first, as GL's matrix calls compose).
#pragma once

struct GlMatrix {
    double m[4][4];

    static GlMatrix Identity();
    // GL's orthographic projection of the box [left, right] x [bottom, top] x
    // [-near, -far] onto [-1, 1] on each axis. Callers keep the extents non-zero.
    static GlMatrix Ortho(double left, double right, double bottom, double top, double nearValue, double farValue);
    static GlMatrix Scale(double x, double y, double z);

    GlMatrix operator*(const GlMatrix& other) const;
    // The transformed point (x, y, z, w).
    void Apply(const double in[4], double out[4]) const;
};
