#include "gpu/Painter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <span>

namespace vmr {

Painter::Painter(GlyphSource& glyphs) : texts_(glyphs) {
    shapes_.reserve(1024);
    runs_.reserve(16);
}

void Painter::begin(double pixelRatio) {
    pixelRatio_ = pixelRatio;
    texts_.begin(pixelRatio);
    shapes_.clear();
    runs_.clear();
}

void Painter::record(PaintSurface& surface) {
    std::span<const ChartVertex> shapes = shapes_;
    std::span<const TextVertex> texts = texts_.vertices();
    const auto uniforms =
        std::bit_cast<std::array<float, 4>>(pixelUniforms(surface.width, surface.height, pixelRatio_));
    for (const Run& run : runs_) {
        const bool isText = run.pipeline == Pipeline::text;
        const auto upload =
            isText ? surface.arena.uploadDyn(texts.first(run.count)) : surface.arena.uploadDyn(shapes.first(run.count));
        if (isText) {
            texts = texts.subspan(run.count);
        } else {
            shapes = shapes.subspan(run.count);
        }
        surface.gpu.setPipeline(run.pipeline);
        surface.gpu.setUniforms(uniforms);
        surface.gpu.draw(isText ? Primitive::quads : Primitive::triangles, upload->buffer, upload->offset,
                         upload->count);
    }
}

void Painter::lengthen(Pipeline pipeline, std::size_t count) {
    if (count == 0) return;
    if (runs_.empty() || runs_.back().pipeline != pipeline) runs_.push_back({pipeline, 0});
    runs_.back().count += count;
}

double Painter::pixel(double points) const { return std::round(points * pixelRatio_); }

void Painter::corner(double x, double y, const Rgba8& color) {
    shapes_.push_back({{static_cast<float>(x), static_cast<float>(y)}, color});
}

void Painter::rect(double x0, double y0, double x1, double y1, const Rgba& color) {
    const double left = pixel(x0), top = pixel(y0);
    const double right = std::max(pixel(x1), left + 1.0), bottom = std::max(pixel(y1), top + 1.0);
    const Rgba8 paint = color;
    lengthen(Pipeline::flat, 6);
    corner(left, top, paint);
    corner(left, bottom, paint);
    corner(right, bottom, paint);
    corner(left, top, paint);
    corner(right, bottom, paint);
    corner(right, top, paint);
}

void Painter::roundedBox(double x0, double y0, double x1, double y1, double radius, const Rgba& color) {
    constexpr int arcSteps = 6;
    constexpr std::size_t rimSize = 4 * (arcSteps + 1);
    const double left = pixel(x0), right = pixel(x1), top = pixel(y0), bottom = pixel(y1);
    const double bend = radius * pixelRatio_;
    std::array<Point, rimSize> rim;
    for (int quarter = 0; quarter < 4; ++quarter) {
        const double cx = quarter == 1 || quarter == 2 ? left + bend : right - bend;
        const double cy = quarter < 2 ? top + bend : bottom - bend;
        for (int i = 0; i <= arcSteps; ++i) {
            const double angle = (quarter + static_cast<double>(i) / arcSteps) * std::numbers::pi / 2;
            rim[static_cast<std::size_t>(quarter * (arcSteps + 1) + i)] = {cx + bend * std::cos(angle),
                                                                           cy - bend * std::sin(angle)};
        }
    }
    const Rgba8 paint = color;
    lengthen(Pipeline::flat, rimSize * 3);
    for (std::size_t i = 0; i < rimSize; ++i) {
        const Point &a = rim[i], &b = rim[(i + 1) % rimSize];
        corner((left + right) * 0.5, (top + bottom) * 0.5, paint);
        corner(a[0], a[1], paint);
        corner(b[0], b[1], paint);
    }
}

void Painter::dashes(double x0, double x1, double y, double dash, double gap, const Rgba& color) {
    const double step = dash + gap;
    if (!(step > 0)) return;
    for (double x = x0; x < x1; x += step) horizontal(x, std::min(x + dash, x1), y, color);
}

void Painter::line(Point from, Point to, double width, const Rgba& color) {
    const double dx = to[0] - from[0], dy = to[1] - from[1], length = std::hypot(dx, dy);
    if (!(length > 0)) return;
    const double ox = -dy / length * width / 2, oy = dx / length * width / 2;
    const Point a{from[0] - ox, from[1] - oy}, b{from[0] + ox, from[1] + oy};
    const Point c{to[0] + ox, to[1] + oy}, d{to[0] - ox, to[1] - oy};
    triangle(a, b, c, color);
    triangle(a, c, d, color);
}

void Painter::triangle(Point a, Point b, Point c, const Rgba& color) {
    const Rgba8 paint = color;
    lengthen(Pipeline::flat, 3);
    for (const Point& point : {a, b, c}) corner(point[0] * pixelRatio_, point[1] * pixelRatio_, paint);
}

void Painter::text(std::string_view text, const TextStyle& style, double x, double y, TextAlign align,
                   const Rgba& color) {
    lengthen(Pipeline::text, texts_.add(text, style, x, y, align, color));
}

}  // namespace vmr
