#include "hostsdk/drawing_raster.h"

#include <algorithm>
#include <cmath>

#include "hostsdk/gl_matrix.h"
#include "hostsdk/pixel_coverage.h"

namespace {

constexpr int VERTICES_PER_LINE = 2;
constexpr int VERTICES_PER_QUAD = 4;
constexpr double FULL_BYTE = 255.0;

struct Colour {
    double r, g, b, a;
};

struct Vertex {
    WindowPoint at;
    Colour colour;
};

// Premultiplied floating-point pixels while drawing.
class Canvas {
public:
    Canvas(int width, int height) : width(width), height(height), pixels(std::size_t(width) * height, {0, 0, 0, 0}) {}

    // Blends `colour` over pixel (i, j) with its alpha scaled by `coverage`;
    // pixels outside the canvas are skipped.
    void Blend(int i, int j, const Colour& colour, double coverage)
    {
        if (i < 0 || j < 0 || i >= width || j >= height || coverage <= 0.0)
            return;
        const double alpha = colour.a * coverage;
        Colour& p = pixels[std::size_t(j) * width + i];
        p = {colour.r * alpha + p.r * (1 - alpha), colour.g * alpha + p.g * (1 - alpha),
             colour.b * alpha + p.b * (1 - alpha), alpha + p.a * (1 - alpha)};
    }

    RgbaImage ToImage() const
    {
        RgbaImage image(width, height);
        const auto byte = [](double v) { return static_cast<uint8_t>(std::lround(std::clamp(v, 0.0, 1.0) * FULL_BYTE)); };
        for (int j = 0; j < height; ++j)
            for (int i = 0; i < width; ++i) {
                const Colour& p = pixels[std::size_t(j) * width + i];
                const double unpremultiply = p.a > 0.0 ? 1.0 / p.a : 0.0;
                uint8_t* out = image.Pixel(i, j);
                out[0] = byte(p.r * unpremultiply);
                out[1] = byte(p.g * unpremultiply);
                out[2] = byte(p.b * unpremultiply);
                out[3] = byte(p.a);
            }
        return image;
    }

    const int width;
    const int height;

private:
    std::vector<Colour> pixels;
};

// The pixels whose squares can meet [low - margin, high + margin] on one axis.
void pixelSpan(double low, double high, double margin, int* first, int* last)
{
    *first = static_cast<int>(std::floor(low - margin));
    *last = static_cast<int>(std::ceil(high + margin));
}

void drawLine(Canvas& canvas, const Vertex& a, const Vertex& b, double width)
{
    const double margin = width / 2.0 + 1.0;
    int i0, i1, j0, j1;
    pixelSpan(std::min(a.at.x, b.at.x), std::max(a.at.x, b.at.x), margin, &i0, &i1);
    pixelSpan(std::min(a.at.y, b.at.y), std::max(a.at.y, b.at.y), margin, &j0, &j1);
    i0 = std::max(i0, 0), j0 = std::max(j0, 0);
    i1 = std::min(i1, canvas.width - 1), j1 = std::min(j1, canvas.height - 1);
    for (int j = j0; j <= j1; ++j)
        for (int i = i0; i <= i1; ++i)
            canvas.Blend(i, j, b.colour, LineCoverage({i + 0.5, j + 0.5}, a.at, b.at, width));
}

void drawQuad(Canvas& canvas, const Vertex* corners)
{
    std::vector<WindowPoint> polygon;
    double xLow = corners[0].at.x, xHigh = xLow, yLow = corners[0].at.y, yHigh = yLow;
    for (int k = 0; k < VERTICES_PER_QUAD; ++k) {
        polygon.push_back(corners[k].at);
        xLow = std::min(xLow, corners[k].at.x), xHigh = std::max(xHigh, corners[k].at.x);
        yLow = std::min(yLow, corners[k].at.y), yHigh = std::max(yHigh, corners[k].at.y);
    }
    int i0, i1, j0, j1;
    pixelSpan(xLow, xHigh, 0.0, &i0, &i1);
    pixelSpan(yLow, yHigh, 0.0, &j0, &j1);
    i0 = std::max(i0, 0), j0 = std::max(j0, 0);
    i1 = std::min(i1, canvas.width - 1), j1 = std::min(j1, canvas.height - 1);
    for (int j = j0; j <= j1; ++j)
        for (int i = i0; i <= i1; ++i)
            canvas.Blend(i, j, corners[VERTICES_PER_QUAD - 1].colour, PolygonCoverage(polygon, i, j));
}

// The replayed state of the pipeline.
class Pipeline {
public:
    // `origin`: the window position of the canvas's pixel (0, 0).
    Pipeline(Canvas& canvas, WindowPoint origin) : canvas(canvas), origin(origin) {}

    void Play(const DrawCall& call)
    {
        switch (call.kind) {
        case DrawCall::COLOUR:
            colour = {call.v[0], call.v[1], call.v[2], call.v[3]};
            break;
        case DrawCall::BEGIN:
            mode = call.mode;
            vertices.clear();
            inPrimitive = true;
            break;
        case DrawCall::VERTEX:
            if (inPrimitive)
                vertices.push_back({toWindow(call.v[0], call.v[1]), colour});
            break;
        case DrawCall::END:
            drawPrimitive();
            inPrimitive = false;
            break;
        case DrawCall::VIEWPORT:
            std::copy_n(call.args, 4, viewport);
            break;
        case DrawCall::MATRIX_MODE:
            if (call.mode == GL_MODELVIEW || call.mode == GL_PROJECTION)
                stack = call.mode == GL_MODELVIEW ? &modelview : &projection;
            break;
        case DrawCall::LOAD_IDENTITY:
            stack->back() = GlMatrix::Identity();
            break;
        case DrawCall::ORTHO: {
            const double* a = call.args;
            if (a[0] != a[1] && a[2] != a[3] && a[4] != a[5])
                stack->back() = stack->back() * GlMatrix::Ortho(a[0], a[1], a[2], a[3], a[4], a[5]);
            break;
        }
        case DrawCall::SCALE:
            stack->back() = stack->back() * GlMatrix::Scale(call.args[0], call.args[1], call.args[2]);
            break;
        case DrawCall::PUSH_MATRIX:
            stack->push_back(stack->back());
            break;
        case DrawCall::POP_MATRIX:
            if (stack->size() > 1)
                stack->pop_back();
            break;
        case DrawCall::LINE_WIDTH:
            if (call.args[0] > 0.0)
                lineWidth = call.args[0];
            break;
        }
    }

private:
    WindowPoint toWindow(double x, double y) const
    {
        const double object[4] = {x, y, 0.0, 1.0};
        double clip[4];
        (projection.back() * modelview.back()).Apply(object, clip);
        const double xNdc = clip[0] / clip[3], yNdc = clip[1] / clip[3];
        return {viewport[0] - origin.x + (xNdc + 1.0) * viewport[2] / 2.0,
                viewport[1] - origin.y + (yNdc + 1.0) * viewport[3] / 2.0};
    }

    void drawPrimitive()
    {
        if (mode == GL_LINES)
            for (std::size_t k = 0; k + VERTICES_PER_LINE <= vertices.size(); k += VERTICES_PER_LINE)
                drawLine(canvas, vertices[k], vertices[k + 1], lineWidth);
        else if (mode == GL_QUADS)
            for (std::size_t k = 0; k + VERTICES_PER_QUAD <= vertices.size(); k += VERTICES_PER_QUAD)
                drawQuad(canvas, &vertices[k]);
    }

    Canvas& canvas;
    const WindowPoint origin;
    std::vector<GlMatrix> modelview{GlMatrix::Identity()};
    std::vector<GlMatrix> projection{GlMatrix::Identity()};
    std::vector<GlMatrix>* stack = &modelview;
    double viewport[4] = {0, 0, 0, 0};
    Colour colour{1, 1, 1, 1};
    double lineWidth = 1.0;
    GLenum mode = 0;
    bool inPrimitive = false;
    std::vector<Vertex> vertices;
};

}  // namespace

RgbaImage RasteriseDrawing(const std::vector<DrawCall>& calls, RowOrder order)
{
    const DrawCall* last = nullptr;
    for (const DrawCall& call : calls)
        if (call.kind == DrawCall::VIEWPORT)
            last = &call;
    const double none[4] = {0, 0, 0, 0};
    const double* viewport = last ? last->args : none;
    Canvas canvas(std::max(static_cast<int>(viewport[2]), 0), std::max(static_cast<int>(viewport[3]), 0));
    Pipeline pipeline(canvas, {viewport[0], viewport[1]});
    for (const DrawCall& call : calls)
        pipeline.Play(call);
    RgbaImage image = canvas.ToImage();
    return order == RowOrder::TOP_DOWN ? image.FlippedRows() : image;
}
