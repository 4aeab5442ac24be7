#include "generic/library/OverlayDrawing.h"

#include <cmath>

#include "hostsdk/gl.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr float kMaxEllipseStep = 36.0f;   // degrees
constexpr float kMinEllipseWidth = 5.0f;   // pixels
constexpr float kHandleGrey = 0.5f;

}  // namespace

void DrawColour(uint32_t red, uint32_t green, uint32_t blue, uint32_t alpha)
{
    glColor4f(static_cast<float>(red / 65535.0), static_cast<float>(green / 65535.0),
              static_cast<float>(blue / 65535.0), static_cast<float>(alpha / 65535.0));
}

void DrawLine(float x1, float y1, float x2, float y2)
{
    glBegin(GL_LINES);
    glVertex2f(x1, y1);
    glVertex2f(x2, y2);
    glEnd();
}

void DrawHandle(float x, float y, bool highlighted, float s)
{
    const float level = highlighted ? 1.0f : kHandleGrey;
    glColor4f(level, level, level, 1.0f);
    glBegin(GL_QUADS);
    glVertex2f(x - s, y - s);
    glVertex2f(x + s, y - s);
    glVertex2f(x + s, y + s);
    glVertex2f(x - s, y + s);
    glVertex2f(x - s, y - s);
    glEnd();
}

void EllipsePoint(float cx, float cy, float rx, float ry, float cosR, float sinR, float angleRadians, float* x,
                  float* y)
{
    const float u = std::cos(angleRadians) * rx;
    const float v = std::sin(angleRadians) * ry;
    *x = cosR * u - sinR * v + cx;
    *y = sinR * u + cosR * v + cy;
}

void DrawEllipse(float x, float y, float widthX, float widthY, float rotation, bool dashed, float segmentLength,
                 float startAngle, float endAngle)
{
    float step = static_cast<float>(360.0 / (kPi * widthX / segmentLength));
    if (step > kMaxEllipseStep)
        step = kMaxEllipseStep;
    if (widthX < kMinEllipseWidth || widthY < kMinEllipseWidth)
        return;
    const float rx = widthX * 0.5f, ry = widthY * 0.5f;
    const double turn = rotation * kPi / 180.0;
    const float cosR = static_cast<float>(std::cos(turn)), sinR = static_cast<float>(std::sin(turn));
    const float degree = static_cast<float>(kPi / 180.0);
    float firstX = 0, firstY = 0, lastX = 0, lastY = 0;
    int index = 0;
    for (float angle = startAngle; angle <= endAngle; angle += step, ++index) {
        float px, py;
        EllipsePoint(x, y, rx, ry, cosR, sinR, angle * degree, &px, &py);
        if (index == 0) {
            firstX = px;
            firstY = py;
        } else if (!dashed || index % 2 != 0) {
            DrawLine(lastX, lastY, px, py);
        }
        lastX = px;
        lastY = py;
    }
    // A full turn closes, dashed or not.
    if (startAngle == 0.0f && endAngle == 360.0f && index > 0)
        DrawLine(firstX, firstY, lastX, lastY);
}

void DrawCrosshair(float x, float y, bool diagonals, float a, float b)
{
    DrawLine(x + a, y, x + b, y);
    DrawLine(x - a, y, x - b, y);
    DrawLine(x, y + a, x, y + b);
    DrawLine(x, y - a, x, y - b);
    if (!diagonals)
        return;
    const float ha = a * 0.5f, hb = b * 0.5f;
    for (float sx : {1.0f, -1.0f})
        for (float sy : {1.0f, -1.0f})
            DrawLine(x + sx * ha, y + sy * ha, x + sx * hb, y + sy * hb);
}
