#include "gpu/Painter.h"

#include <algorithm>
#include <bit>
#include <cmath>
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
    boxes_.clear();
    segments_.clear();
    runs_.clear();
}

void Painter::record(PaintSurface& surface) {
    const auto pixels = std::bit_cast<std::array<float, 4>>(pixelUniforms(surface.width, surface.height, pixelRatio_));
    const auto points = std::bit_cast<std::array<float, 8>>(pointUniforms(surface.width, surface.height));
    const auto draw = [&](Pipeline pipeline, auto& list, std::size_t count) {
        const auto upload = surface.arena.uploadDyn(list.first(count));
        list = list.subspan(count);
        surface.gpu.setPipeline(pipeline);
        if (pipeline == Pipeline::flat || pipeline == Pipeline::text)
            surface.gpu.setUniforms(pixels);
        else
            surface.gpu.setUniforms(points);
        surface.gpu.draw(pipeline == Pipeline::flat ? Primitive::triangles : Primitive::quads, upload->buffer,
                         upload->offset, upload->count);
    };
    std::span<const ChartVertex> shapes = shapes_;
    std::span<const RoundVertex> boxes = boxes_;
    std::span<const LineVertex> segments = segments_;
    std::span<const TextVertex> texts = texts_.vertices();
    for (const Run& run : runs_) {
        if (run.pipeline == Pipeline::text)
            draw(run.pipeline, texts, run.count);
        else if (run.pipeline == Pipeline::rounded)
            draw(run.pipeline, boxes, run.count);
        else if (run.pipeline == Pipeline::ribbon)
            draw(run.pipeline, segments, run.count);
        else
            draw(run.pipeline, shapes, run.count);
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
    const auto edge = [this](double points) { return static_cast<float>(pixel(points) / pixelRatio_); };
    const Rgba8 paint = color;
    lengthen(Pipeline::rounded, boxVertices);
    eachCorner(edge(x0), edge(y0), edge(x1), edge(y1), [&](float x, float y, float ox, float oy) {
        boxes_.push_back({{x, y}, {ox, oy}, static_cast<float>(radius), paint});
    });
}

void Painter::dashes(double x0, double x1, double y, double dash, double gap, const Rgba& color) {
    const double step = dash + gap;
    if (!(step > 0)) return;
    for (double x = x0; x < x1; x += step) horizontal(x, std::min(x + dash, x1), y, color);
}

void Painter::line(Point from, Point to, double width, const Rgba& color) {
    if (!(std::hypot(to[0] - from[0], to[1] - from[1]) > 0)) return;
    lengthen(Pipeline::ribbon, segmentVertices);
    segments_.resize(segments_.size() + segmentVertices);
    writeSegment(&*(segments_.end() - segmentVertices), static_cast<float>(from[0]), static_cast<float>(from[1]),
                 static_cast<float>(to[0]), static_cast<float>(to[1]), static_cast<float>(width / 2), color);
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
