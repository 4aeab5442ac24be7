#include "hostsdk/gl_matrix.h"

GlMatrix GlMatrix::Identity()
{
    GlMatrix identity{};
    for (int i = 0; i < 4; ++i)
        identity.m[i][i] = 1.0;
    return identity;
}

GlMatrix GlMatrix::Ortho(double left, double right, double bottom, double top, double nearValue, double farValue)
{
    GlMatrix ortho = Identity();
    ortho.m[0][0] = 2.0 / (right - left);
    ortho.m[1][1] = 2.0 / (top - bottom);
    ortho.m[2][2] = -2.0 / (farValue - nearValue);
    ortho.m[0][3] = -(right + left) / (right - left);
    ortho.m[1][3] = -(top + bottom) / (top - bottom);
    ortho.m[2][3] = -(farValue + nearValue) / (farValue - nearValue);
    return ortho;
}

GlMatrix GlMatrix::Scale(double x, double y, double z)
{
    GlMatrix scale = Identity();
    scale.m[0][0] = x;
    scale.m[1][1] = y;
    scale.m[2][2] = z;
    return scale;
}

GlMatrix GlMatrix::operator*(const GlMatrix& other) const
{
    GlMatrix product{};
    for (int row = 0; row < 4; ++row)
        for (int col = 0; col < 4; ++col)
            for (int k = 0; k < 4; ++k)
                product.m[row][col] += m[row][k] * other.m[k][col];
    return product;
}

void GlMatrix::Apply(const double in[4], double out[4]) const
{
    for (int row = 0; row < 4; ++row)
        out[row] = m[row][0] * in[0] + m[row][1] * in[1] + m[row][2] * in[2] + m[row][3] * in[3];
}
