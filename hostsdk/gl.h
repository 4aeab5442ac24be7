// The drawing layer: the immediate-mode calls that the overlay draws with, in
// place of OpenGL 1.x.
//
// Calls go to the drawing surface made current on the calling thread (as a GL
// context is); with none current they do nothing. A surface records every call
// in order, and can replay the record into an anti-aliased RGBA image
// (drawing_raster.h tells the rules).
#pragma once

#include <cstdint>
#include <vector>

#include "hostsdk/rgba_image.h"

typedef uint32_t GLenum;
typedef int32_t GLint;
typedef int32_t GLsizei;
typedef float GLfloat;
typedef double GLdouble;

inline constexpr GLenum GL_LINES = 0x0001;
inline constexpr GLenum GL_QUADS = 0x0007;
inline constexpr GLenum GL_MODELVIEW = 0x1700;
inline constexpr GLenum GL_PROJECTION = 0x1701;

// One recorded call.
struct DrawCall {
    enum Kind {
        COLOUR,
        BEGIN,
        VERTEX,
        END,
        VIEWPORT,       // args: x, y, width, height
        MATRIX_MODE,    // mode: GL_MODELVIEW or GL_PROJECTION
        LOAD_IDENTITY,
        ORTHO,          // args: left, right, bottom, top, near, far
        SCALE,          // args: x, y, z
        PUSH_MATRIX,
        POP_MATRIX,
        LINE_WIDTH,     // args: width
    } kind;
    float v[4];           // colour: r, g, b, a; vertex: x, y
    GLenum mode;          // for BEGIN and MATRIX_MODE
    double args[6] = {};  // the arguments of the other calls, in call order
};

// Which image row comes first when a surface is rasterised. Window y grows
// upwards from the bottom edge of the viewport (as in OpenGL), so BOTTOM_UP
// keeps window row 0 first; TOP_DOWN gives the order image files use.
enum class RowOrder { BOTTOM_UP, TOP_DOWN };

class DrawingSurface {
public:
    std::vector<DrawCall> calls;

    // Replays `calls` into an image of the last viewport's rectangle over a
    // transparent black background; 0 x 0 if no viewport was set.
    RgbaImage Rasterise(RowOrder order = RowOrder::BOTTOM_UP) const;
};

// Makes `surface` current on this thread (null: none). The surface is not
// owned; it must outlive its being current.
void drawingMakeCurrent(DrawingSurface* surface);
DrawingSurface* drawingCurrent();

// Window rectangle that normalised device coordinates map onto.
void glViewport(GLint x, GLint y, GLsizei width, GLsizei height);
// Selects the matrix stack that the matrix calls below work on.
void glMatrixMode(GLenum mode);
void glLoadIdentity();
// Multiplies the current matrix by an orthographic projection.
void glOrtho(GLdouble left, GLdouble right, GLdouble bottom, GLdouble top, GLdouble nearValue, GLdouble farValue);
// Multiplies the current matrix by a scale.
void glScalef(GLfloat x, GLfloat y, GLfloat z);
void glScaled(GLdouble x, GLdouble y, GLdouble z);
// Saves and restores the current matrix on its stack.
void glPushMatrix();
void glPopMatrix();
// Width in pixels of the lines that follow; 1 at start.
void glLineWidth(GLfloat width);

void glColor4f(float red, float green, float blue, float alpha);
void glBegin(GLenum mode);
void glVertex2f(float x, float y);
void glEnd();
