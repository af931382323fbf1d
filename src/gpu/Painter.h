// Paints rectangles, lines and texts in points over a frame.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

#include "gpu/FrameArena.h"
#include "gpu/Gpu.h"
#include "gpu/PlotArea.h"
#include "gpu/TextRuns.h"

namespace vmr {

/// The frame that is painted into; sizes in points.
struct PaintSurface {
    Gpu& gpu;
    FrameArena& arena;
    double width = 0;
    double height = 0;
    double pixelRatio = 1;

    PlotArea plot() const { return {width, height}; }
};

/// What is painted first lies lowest, texts and shapes alike; a run of one kind is one draw. Places in points from
/// the view's top left. Edges of rectangles and the places of texts are rounded to device pixels, so that they are
/// crisp. Painting allocates nothing once its lists have grown. Main thread.
class Painter {
 public:
    using Point = std::array<double, 2>;

    /// `glyphs` must outlive it.
    explicit Painter(GlyphSource& glyphs);

    /// Calls `paint`, which may use everything below, and records what it painted. Rasterising a new glyph may rebuild
    /// the atlas and move the glyphs of texts already painted: then `paint` is called again, a few times at most. True
    /// when even the last time was in vain, so that another frame is needed. Sets pipeline and uniforms.
    template <class Paint>
    bool paint(PaintSurface& surface, Paint&& paint) {
        constexpr int attempts = 3;
        for (int attempt = 0; attempt < attempts; ++attempt) {
            begin(surface.pixelRatio);
            paint();
            if (!texts_.stale()) break;
        }
        record(surface);
        return texts_.stale();
    }

    // Shapes; a side that is shorter than a device pixel gets one.
    void rect(double x0, double y0, double x1, double y1, const Rgba& color);
    void roundedBox(double x0, double y0, double x1, double y1, double radius, const Rgba& color);
    /// One device pixel thick, downwards from `y` or to the right from `x`.
    void horizontal(double x0, double x1, double y, const Rgba& color) { rect(x0, y, x1, y, color); }
    void vertical(double x, double y0, double y1, const Rgba& color) { rect(x, y0, x, y1, color); }
    /// Pieces of `dash` points with `gap` points between them, the last one cut at `x1`. Nothing unless both add up to
    /// more than 0.
    void dashes(double x0, double x1, double y, double dash, double gap, const Rgba& color);
    // Of any slope, not rounded. A line ends square at its points.
    void line(Point from, Point to, double width, const Rgba& color);
    void triangle(Point a, Point b, Point c, const Rgba& color);

    /// One line of text, vertically centred on `y`; `align` tells where `x` lies in it.
    void text(std::string_view text, const TextStyle& style, double x, double y, TextAlign align, const Rgba& color);
    double textWidth(std::string_view text, const TextStyle& style) { return texts_.width(text, style); }
    double lineHeight(const TextStyle& style) { return texts_.lineHeight(style); }

 private:
    struct Run {
        Pipeline pipeline = Pipeline::flat;
        std::size_t count = 0;  // vertices
    };
    void begin(double pixelRatio);
    void record(PaintSurface& surface);
    void lengthen(Pipeline pipeline, std::size_t count);
    void corner(double x, double y, const Rgba8& color);  // device pixels
    double pixel(double points) const;

    TextRuns texts_;
    double pixelRatio_ = 1;
    std::vector<ChartVertex> shapes_;
    std::vector<RoundVertex> boxes_;
    std::vector<LineVertex> segments_;
    std::vector<Run> runs_;  // in the order of painting
};

}  // namespace vmr
