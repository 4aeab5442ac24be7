#include "hostsdk/gl.h"

#include "hostsdk/drawing_raster.h"

namespace {

thread_local DrawingSurface* current = nullptr;

void record(DrawCall call)
{
    if (current)
        current->calls.push_back(call);
}

// A call with double arguments only.
DrawCall withArgs(DrawCall::Kind kind, std::initializer_list<double> args)
{
    DrawCall call{kind, {0, 0, 0, 0}, 0};
    int i = 0;
    for (double arg : args)
        call.args[i++] = arg;
    return call;
}

}  // namespace

RgbaImage DrawingSurface::Rasterise(RowOrder order) const { return RasteriseDrawing(calls, order); }

void drawingMakeCurrent(DrawingSurface* surface) { current = surface; }
DrawingSurface* drawingCurrent() { return current; }

void glViewport(GLint x, GLint y, GLsizei width, GLsizei height)
{
    record(withArgs(DrawCall::VIEWPORT, {double(x), double(y), double(width), double(height)}));
}
void glMatrixMode(GLenum mode) { record({DrawCall::MATRIX_MODE, {0, 0, 0, 0}, mode}); }
void glLoadIdentity() { record(withArgs(DrawCall::LOAD_IDENTITY, {})); }
void glOrtho(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble nearValue, GLdouble farValue)
{
    record(withArgs(DrawCall::ORTHO, {left, right, bottom, top, nearValue, farValue}));
}
void glScalef(GLfloat x, GLfloat y, GLfloat z) { glScaled(x, y, z); }
void glScaled(GLdouble x, GLdouble y, GLdouble z) { record(withArgs(DrawCall::SCALE, {x, y, z})); }
void glPushMatrix() { record(withArgs(DrawCall::PUSH_MATRIX, {})); }
void glPopMatrix() { record(withArgs(DrawCall::POP_MATRIX, {})); }
void glLineWidth(GLfloat width) { record(withArgs(DrawCall::LINE_WIDTH, {width})); }

void glColor4f(float red, float green, float blue, float alpha) { record({DrawCall::COLOUR, {red, green, blue, alpha}, 0}); }
void glBegin(GLenum mode) { record({DrawCall::BEGIN, {0, 0, 0, 0}, mode}); }
void glVertex2f(float x, float y) { record({DrawCall::VERTEX, {x, y, 0, 0}, 0}); }
void glEnd() { record({DrawCall::END, {0, 0, 0, 0}, 0}); }
