#include "hostsdk/gl.h"

namespace {

thread_local DrawingSurface* current = nullptr;

void record(DrawCall call)
{
    if (current)
        current->calls.push_back(call);
}

}  // namespace

void drawingMakeCurrent(DrawingSurface* surface) { current = surface; }
DrawingSurface* drawingCurrent() { return current; }

void glColor4f(float red, float green, float blue, float alpha) { record({DrawCall::COLOUR, {red, green, blue, alpha}, 0}); }
void glBegin(GLenum mode) { record({DrawCall::BEGIN, {0, 0, 0, 0}, mode}); }
void glVertex2f(float x, float y) { record({DrawCall::VERTEX, {x, y, 0, 0}, 0}); }
void glEnd() { record({DrawCall::END, {0, 0, 0, 0}, 0}); }
