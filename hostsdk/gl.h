// The drawing layer: the immediate-mode calls that the overlay draws with.
//
// Calls go to the drawing surface made current on the calling thread (as a GL
// context is); with none current they do nothing. A surface records every call
// in order.
#pragma once

#include <cstdint>
#include <vector>

typedef uint32_t GLenum;
inline constexpr GLenum GL_LINES = 0x0001;
inline constexpr GLenum GL_QUADS = 0x0007;

// One recorded call.
struct DrawCall {
    enum Kind { COLOUR, BEGIN, VERTEX, END } kind;
    float v[4];      // colour: r, g, b, a; vertex: x, y
    GLenum mode;     // for BEGIN
};

class DrawingSurface {
public:
    std::vector<DrawCall> calls;
};

// Makes `surface` current on this thread (null: none).
void drawingMakeCurrent(DrawingSurface* surface);
DrawingSurface* drawingCurrent();

void glColor4f(float red, float green, float blue, float alpha);
void glBegin(GLenum mode);
void glVertex2f(float x, float y);
void glEnd();
