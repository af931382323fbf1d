#include "ui/FrameRaster.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>
#include <tuple>

namespace vmr::test {

namespace {

struct Corner {
    double x = 0, y = 0;  // device pixels from the top left
    Rgba color{};
    double u = 0, v = 0;
};

/// The outline within a quad whose inside the GPU finds for each pixel; everything of the quad without one.
struct Outline {
    enum class Kind : std::uint8_t { none, box, candle, disc, up, down, dashes } kind = Kind::none;
    double x = 0, y = 0;                   // its middle, device pixels
    double halfWidth = 0, halfHeight = 0;  // of a box or a candle's body
    double radius = 0;
    double alongX = 0, alongY = 0, length = 0, period = 0, dash = 0;  // of a segment of dashes from x, y on, pixels
    double stroke = 0, fill = 0, wickHalf = 0, wickTop = 0, wickBottom = 0;  // of a candle

    // How much of the square of `side` pixels around px, py counts; of a point where it has no size.
    double covers(double px, double py, double side) const {
        const auto share = [side](double inside) {
            return side > 0 ? std::clamp(inside / side + 0.5, 0.0, 1.0) : inside > 0 ? 1.0 : 0.0;
        };
        const auto span = [&](double d, double half) {
            return half > 0 ? std::max(share(half - d) + share(half + d) - 1, 0.0) : 0.0;
        };
        const double dx = px - x, dy = py - y;
        switch (kind) {
            case Kind::box: {
                const double qx = std::abs(dx) - halfWidth + radius, qy = std::abs(dy) - halfHeight + radius;
                return share(radius - std::hypot(std::max(qx, 0.0), std::max(qy, 0.0)) -
                             std::min(std::max(qx, qy), 0.0));
            }
            case Kind::candle: {
                const double bodyX = span(dx, halfWidth), bodyY = span(dy, halfHeight);
                const double top = y - halfHeight - stroke, bottom = y + halfHeight + stroke;
                const double filled =
                    stroke > 0 ? span(dx, halfWidth - stroke) * span(dy, halfHeight - stroke) : bodyX * bodyY;
                const double outline =
                    span(dx, halfWidth + stroke) * bodyY + bodyX * (span(dy, halfHeight + stroke) - bodyY) - filled;
                const auto piece = [&](double from, double to) {
                    return to > from ? span(py - (from + to) / 2, (to - from) / 2) : 0;
                };
                const double wicks = span(dx, wickHalf) * (piece(wickTop, top) + piece(bottom, wickBottom));
                return outline + wicks + filled * fill;
            }
            case Kind::disc:
                return share(radius - std::hypot(dx, dy));
            case Kind::up:
            case Kind::down: {
                const double above = kind == Kind::up ? -dy : dy;  // towards the tip
                const auto row = [&](double d) { return span(dx, std::max(radius - above - d * side, 0.0) / 2); };
                return (row(0.25) + row(-0.25)) / 2 * share(above + radius);
            }
            case Kind::dashes: {
                if (period <= 0) return dash;
                // How much of the line lies within dashes up to a place; beyond the segment is another one like it.
                const auto dashesTo = [&](double at) {
                    const auto within = [&](double d) {
                        return std::floor(d / period) * dash + std::min(d - std::floor(d / period) * period, dash);
                    };
                    const double segments = std::floor(at / length);
                    return segments * within(length) + within(at - segments * length);
                };
                const double at = dx * alongX + dy * alongY, reach = std::max(side, 1e-6) / 2;
                return (dashesTo(at + reach) - dashesTo(at - reach)) / (reach * 2);
            }
            case Kind::none:
                break;
        }
        return 1;
    }
};

/// A picture of `grid` by `grid` samples a pixel.
class Canvas {
 public:
    // Of the rows of pixels from `top` on. `exact`: each sample finds out by itself what covers it.
    Canvas(const RecordedFrame& frame, const QImage& atlas, int side, int top, int rows, bool exact)
        : grid(side),
          width(static_cast<int>(std::ceil(frame.width * frame.pixelRatio)) * side),
          height(rows * side),
          frame_(frame),
          atlas_(atlas),
          top_(top),
          exact_(exact),
          samples_(static_cast<std::size_t>(width * height)) {}

    const int grid, width, height;  // the last two in samples
    std::array<float, 3>& valueAt(int x, int y) { return samples_[static_cast<std::size_t>(y * width + x)]; }  // 0 to 1

    void draw(const RecordedFrame::Draw& call) {
        clip_ = frame_.clips.at(call.clip);
        clip_.top = std::max(clip_.top, top_) - top_;
        clip_.bottom = std::min(clip_.bottom - top_, height / grid);
        if (clip_.empty()) return;
        opaque_ = call.opaque;
        const auto stride = vertexStride(call.pipeline);
        const auto bytes = bytesOf(frame_, call);
        const bool text = call.pipeline == Pipeline::text;
        const std::size_t shape = call.primitive == Primitive::lines ? 2 : call.primitive == Primitive::quads ? 4 : 3;
        std::vector<Corner> c;
        for (std::size_t i = 0; i < call.vertexCount; ++i) {
            c.push_back(corner(call, bytes.data() + i * stride));
            if (c.size() < shape) continue;
            if (shape == 2) line(c[0], c[1]);
            if (shape >= 3) triangle(c[0], c[1], c[2], text);
            if (shape == 4) triangle(c[0], c[2], c[3], text);
            c.clear();
            outline_ = {};
        }
    }

 private:
    template <class Vertex>
    static Vertex read(const std::byte* bytes) {
        Vertex vertex;
        std::memcpy(&vertex, bytes, sizeof vertex);
        return vertex;
    }

    Corner corner(const RecordedFrame::Draw& call, const std::byte* bytes) {
        const auto& u = frame_.uniforms[call.uniforms];
        const auto at = [&](const float* place, const Rgba8& color) {
            return Corner{(place[0] * u[0] + u[1] + 1) * 0.5 * frame_.width * frame_.pixelRatio,
                          (1 - place[1] * u[2] - u[3]) * 0.5 * frame_.height * frame_.pixelRatio, color.shares()};
        };
        switch (call.pipeline) {
            case Pipeline::box: {
                const auto vertex = read<BoxVertex>(bytes);
                return at(vertex.corner, vertex.color);
            }
            case Pipeline::rounded: {
                const auto vertex = read<RoundVertex>(bytes);
                outline_.kind = Outline::Kind::box;
                outline_.radius = vertex.radius * frame_.pixelRatio;
                return grown(at(vertex.corner, vertex.color), at(vertex.opposite, {}), 0.5);
            }
            case Pipeline::candle:
            case Pipeline::dense:
            case Pipeline::crowded: {
                const auto vertex = read<CandleVertex>(bytes);
                const auto rowOf = [&](float price) { return at(std::array{0.0F, price}.data(), {}).y; };
                const double top = rowOf(vertex.body[0]), bottom = rowOf(vertex.body[1]);
                const Corner corner = at(vertex.corner, vertex.color), opposite = at(vertex.opposite, {});
                outline_.kind = Outline::Kind::candle;
                outline_.fill = vertex.halfStroke > 0 ? vertex.fill : 1;
                outline_.stroke = vertex.halfStroke * frame_.pixelRatio;
                std::tie(outline_.wickTop, outline_.wickBottom) = std::minmax({corner.y, opposite.y});
                const Corner out = grown(corner, opposite, outline_.stroke + 1);
                outline_.y = (top + bottom) / 2;  // of the body alone
                outline_.halfHeight = std::abs(top - bottom) / 2;
                outline_.wickHalf = outline_.halfWidth * vertex.wick;
                return out;
            }
            case Pipeline::ribbon:
            case Pipeline::dashed: {
                const auto vertex = read<LineVertex>(bytes);
                const Corner middle = at(vertex.pos, vertex.color);
                if (call.pipeline == Pipeline::dashed && !vertex.atEnd()) dashes(middle, vertex, u);
                return ribbonCorner(middle, vertex, u);
            }
            case Pipeline::disc:
            case Pipeline::triangle: {
                const auto vertex = read<MarkerVertex>(bytes);
                return markerCorner(at(vertex.center, vertex.color), vertex, u, call.pipeline == Pipeline::disc);
            }
            case Pipeline::text: {
                const auto vertex = read<TextVertex>(bytes);
                Corner out = at(vertex.position, vertex.color);
                out.u = vertex.uv[0] * atlas_.width();
                out.v = vertex.uv[1] * atlas_.height();
                return out;
            }
            case Pipeline::flat:
                break;
        }
        const auto vertex = read<ChartVertex>(bytes);
        return at(vertex.position, vertex.color);
    }

    // A corner of the outline's box, with the pixels that its edge covers in part.
    Corner grown(Corner corner, const Corner& opposite, double by) {
        outline_.x = (corner.x + opposite.x) / 2;
        outline_.y = (corner.y + opposite.y) / 2;
        outline_.halfWidth = std::abs(corner.x - opposite.x) / 2;
        outline_.halfHeight = std::abs(corner.y - opposite.y) / 2;
        corner.x += std::copysign(by, corner.x - opposite.x);
        corner.y += std::copysign(by, corner.y - opposite.y);
        return corner;
    }

    // Two segments meet on the line that halves their turn, unless it is sharp or one is too short.
    Corner ribbonCorner(Corner corner, const LineVertex& vertex, const std::array<float, 8>& u) const {
        struct Way {
            double x, y, length, leftX, leftY;
        };
        const auto wayOf = [&](const float* d) {
            const double x = d[0] * u[0] * u[4] * 0.5 * frame_.pixelRatio;
            const double y = d[1] * u[2] * u[5] * 0.5 * frame_.pixelRatio;
            const double length = std::hypot(x, y), divisor = std::max(length, 1e-6);
            return Way{x, y, length, -y / divisor, x / divisor};
        };
        const Way own = wayOf(vertex.dir), other = wayOf(vertex.joined);
        const double half = vertex.halfWidth() * frame_.pixelRatio, side = vertex.beside < 0 ? -half : half;
        const double mx = own.leftX + other.leftX, my = own.leftY + other.leftY, turn = mx * mx + my * my;
        const double needed = (half + 0.75) * std::sqrt(std::max(4 / std::max(turn, 1e-6) - 1, 0.0));
        const bool meet = turn > 1 && needed < std::min(own.length, other.length) * 0.8;
        corner.x += (meet ? mx * 2 / turn : own.leftX) * side;
        corner.y -= (meet ? my * 2 / turn : own.leftY) * side;
        return corner;
    }

    // A segment's dashes, given where it begins.
    void dashes(const Corner& from, const LineVertex& vertex, const std::array<float, 8>& u) {
        const double x = vertex.dir[0] * u[0] * u[4] * 0.5 * frame_.pixelRatio;
        const double y = -vertex.dir[1] * u[2] * u[5] * 0.5 * frame_.pixelRatio;
        const double length = std::hypot(x, y);
        outline_.kind = Outline::Kind::dashes;
        outline_.length = length;
        outline_.x = from.x;
        outline_.y = from.y;
        outline_.alongX = x / length;
        outline_.alongY = y / length;
        outline_.period = u[6] * length / vertex.dir[0];
        outline_.dash = u[6] > 0 ? outline_.period * u[7] : u[7];
    }

    Corner markerCorner(Corner center, const MarkerVertex& vertex, const std::array<float, 8>& u, bool disc) {
        const unsigned which = vertex.color.a % 4;
        const double radius = vertex.radius * u[7] * frame_.pixelRatio, up = vertex.isDown() ? 1 : -1;
        outline_.kind = disc ? Outline::Kind::disc : vertex.isDown() ? Outline::Kind::down : Outline::Kind::up;
        outline_.x = center.x;
        outline_.y = center.y;
        outline_.radius = radius;
        center.color[3] = vertex.alpha * u[6];
        if (disc) {
            center.x += (radius + 0.5) * (which >= 2 ? 1 : -1);
            center.y += (radius + 0.5) * (which == 1 || which == 2 ? 1 : -1);
        } else {  // a triangle around the outline
            center.x += which == 0 ? 0 : (radius + 2) * (which == 2 ? 1 : -1);
            center.y += up * (which == 0 ? radius + 4 : -radius - 1);
        }
        return center;
    }

    // One pixel wide.
    void line(const Corner& a, const Corner& b) {
        const double dx = b.x - a.x, dy = b.y - a.y, len = std::max(std::hypot(dx, dy), 1e-6) * 2;
        const auto beside = [&](const Corner& c, double side) {
            return Corner{c.x - dy / len * side, c.y + dx / len * side, c.color};
        };
        triangle(beside(a, 1), beside(a, -1), beside(b, -1), false);
        triangle(beside(a, 1), beside(b, -1), beside(b, 1), false);
    }

    void triangle(Corner a, Corner b, Corner c, bool text) {
        for (Corner* corner : {&a, &b, &c}) corner->y -= top_;
        const auto cross = [](const Corner& p, const Corner& q, double x, double y) {
            return (q.x - p.x) * (y - p.y) - (q.y - p.y) * (x - p.x);
        };
        if (cross(a, b, c.x, c.y) < 0) std::swap(b, c);
        const double area = cross(a, b, c.x, c.y);
        if (area == 0) return;
        // An edge shared by two triangles belongs to one of them.
        const auto covers = [](double weight, const Corner& p, const Corner& q) {
            return weight > 0 || (weight == 0 && (q.y < p.y || (q.y == p.y && q.x > p.x)));
        };
        const auto range = [this](double p, double q, double r, int from, int to) {
            const auto [lo, hi] = std::minmax({p, q, r});
            return std::pair(std::max(static_cast<int>(std::floor(std::clamp(lo * grid, -1e6, 1e6))), from),
                             std::min(static_cast<int>(std::ceil(std::clamp(hi * grid, -1e6, 1e6))) + 1, to));
        };
        const auto [x0, x1] = range(a.x, b.x, c.x, clip_.left * grid, std::min(clip_.right * grid, width));
        const auto [y0, y1] = range(a.y, b.y, c.y, clip_.top * grid, std::min(clip_.bottom * grid, height));
        for (int sy = y0; sy < y1; ++sy) {
            for (int sx = x0; sx < x1; ++sx) {
                // from the canvas's top; of exact ones no two of a pixel share a row or a column
                const double skewX = exact_ ? (sy % grid + 0.5) / grid : 0.5;
                const double skewY = exact_ ? (sx % grid + 0.5) / grid : 0.5;
                const double x = (sx + skewX) / grid, y = (sy + skewY) / grid;
                const double wa = cross(b, c, x, y), wb = cross(c, a, x, y), wc = cross(a, b, x, y);
                if (!covers(wa, b, c) || !covers(wb, c, a) || !covers(wc, a, b)) continue;
                const auto mix = [&](double p, double q, double r) { return (p * wa + q * wb + r * wc) / area; };
                double alpha = mix(a.color[3], b.color[3], c.color[3]);
                alpha *= exact_ ? outline_.covers(x, y + top_, 0)  // else one value for all samples of a pixel
                                : outline_.covers(sx / grid + 0.5, sy / grid + top_ + 0.5, 1);
                if (text) {
                    const int u = std::clamp(static_cast<int>(mix(a.u, b.u, c.u)), 0, atlas_.width() - 1);
                    const int v = std::clamp(static_cast<int>(mix(a.v, b.v, c.v)), 0, atlas_.height() - 1);
                    alpha *= atlas_.constScanLine(v)[u] / 255.0;
                }
                for (std::size_t i = 0; i < 3; ++i) {
                    float& sample = valueAt(sx, sy)[i];
                    const double color = mix(a.color[i], b.color[i], c.color[i]);
                    sample = static_cast<float>(opaque_ ? color : color * alpha + sample * (1 - alpha));
                }
            }
        }
    }

    const RecordedFrame& frame_;
    const QImage& atlas_;
    const int top_;
    const bool exact_;
    std::vector<std::array<float, 3>> samples_;
    PixelRect clip_;  // from the canvas's top
    bool opaque_ = false;
    Outline outline_;  // of the quad being drawn
};

Canvas rasterise(const RecordedFrame& frame, const QImage& atlas, int side) {
    Canvas canvas(frame, atlas, side, 0, static_cast<int>(std::ceil(frame.height * frame.pixelRatio)), false);
    for (const auto& call : frame.draws) canvas.draw(call);
    return canvas;
}

/// What differs: values that the raster does not allow, the first of them in words, and the mean error.
struct Difference {
    int wrong = 0;
    std::string first;
    double mean = 0;
};

Difference difference(const QImage& image, Canvas expected) {
    const int grid = expected.grid;
    Difference out;
    double error = 0;
    for (int i = 0; i < image.width() * image.height() * 3; ++i) {
        const int channel = i % 3, x = i / 3 % image.width(), y = i / 3 / image.width();
        const auto got = static_cast<float>(image.pixel(x, y) >> (16 - 8 * channel) & 0xFF);
        float low = 1e9F, high = -1e9F, mean = 0;
        // One sample further on each side: hardware places its samples and rounds its edges differently.
        for (int sy = y * grid - 1; sy <= y * grid + grid; ++sy) {
            for (int sx = x * grid - 1; sx <= x * grid + grid; ++sx) {
                const auto& sample =
                    expected.valueAt(std::clamp(sx, 0, expected.width - 1), std::clamp(sy, 0, expected.height - 1));
                const float value = sample[static_cast<std::size_t>(channel)] * 255.0F;
                low = std::min(low, value);
                high = std::max(high, value);
                if (sx / grid == x && sy / grid == y && sx >= 0 && sy >= 0)
                    mean += value / static_cast<float>(grid * grid);
            }
        }
        error += std::abs(got - mean);
        if ((got >= low - 3 && got <= high + 3) || ++out.wrong > 1) continue;
        std::ostringstream words;
        words << "channel " << channel << " at " << x << ", " << y << ": " << got << ", expected about " << mean;
        out.first = words.str();
    }
    out.mean = error / (3.0 * image.width() * image.height());
    return out;
}

}  // namespace

std::span<const std::byte> bytesOf(const RecordedFrame& frame, const RecordedFrame::Draw& draw) {
    const auto& all = draw.source < 0 ? frame.stream : frame.retained[static_cast<std::size_t>(draw.source)]->bytes;
    return std::span(all).subspan(draw.byteOffset, draw.vertexCount * vertexStride(draw.pipeline));
}

void expectSame(const QImage& image, const RecordedFrame& frame, const QImage& atlas, double meanError) {
    // at a fractional ratio the last pixel may lie beyond the window
    ASSERT_GE(image.width(), std::ceil(frame.width * frame.pixelRatio) - 1);
    ASSERT_GE(image.height(), std::ceil(frame.height * frame.pixelRatio) - 1);
    const auto is = [&](const Difference& found, int wrong) { return found.wrong <= wrong && found.mean < meanError; };
    const Difference sampled = difference(image, rasterise(frame, atlas, 4));
    if (is(sampled, 0)) return;
    // Newer rasterisers colour a pixel by its middle alone, where several faint shapes may end: each then counts or not
    // by the last bit of its place, and between its neighbours is not all that may come of it. No more than one pixel.
    constexpr int onePixel = 3;
    const Difference middle = difference(image, rasterise(frame, atlas, 1));
    EXPECT_TRUE(is(middle, onePixel)) << sampled.wrong << " wrong, mean error " << sampled.mean << "; " << sampled.first
                                      << "; of the pixels' middles " << middle.wrong << " and " << middle.mean;
}

Deviation deviationFromCoverage(const QImage& image, const RecordedFrame& frame, const QImage& atlas) {
    constexpr int side = 16, rows = 8;
    std::size_t first = 0;  // the last clearing of the view, which hides what was before it
    for (std::size_t i = 0; i < frame.draws.size(); ++i)
        if (frame.draws[i].opaque) first = i;
    Deviation out;
    double sum = 0;
    for (int top = 0; top < image.height(); top += rows) {
        Canvas canvas(frame, atlas, side, top, std::min(rows, image.height() - top), true);
        canvas.draw(frame.draws[first]);
        const auto ground = canvas.valueAt(0, 0);
        for (std::size_t i = first + 1; i < frame.draws.size(); ++i) canvas.draw(frame.draws[i]);
        for (int i = 0; i < image.width() * (canvas.height / side); ++i) {
            const int x = i % image.width(), y = i / image.width();
            const QRgb pixel = image.pixel(x, top + y);
            const int got[] = {qRed(pixel), qGreen(pixel), qBlue(pixel)};
            double error = 0, shown = 0;
            for (std::size_t channel = 0; channel < 3; ++channel) {
                double mean = 0;
                for (int s = 0; s < side * side; ++s)
                    mean += canvas.valueAt(x * side + s % side, y * side + s / side)[channel];
                mean /= side * side;
                error = std::max(error, std::abs(got[channel] / 255.0 - mean));
                shown = std::max(
                    {shown, std::abs(mean - ground[channel]), std::abs(got[channel] / 255.0 - ground[channel])});
            }
            if (shown < 0.004) continue;  // one step of a byte
            ++out.pixels;
            sum += error;
            if (error <= out.most) continue;
            out.most = error;
            out.x = x;
            out.y = top + y;
        }
    }
    out.mean = out.pixels > 0 ? sum / out.pixels : 0;
    return out;
}

}  // namespace vmr::test
