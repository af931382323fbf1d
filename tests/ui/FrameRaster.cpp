#include "ui/FrameRaster.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace vmr::test {

namespace {

constexpr int grid = 4;  // samples along a pixel's side

struct Corner {
    double x = 0, y = 0;  // device pixels from the top left
    Rgba color{};
    double u = 0, v = 0;
};

class Canvas {
 public:
    Canvas(const RecordedFrame& frame, const QImage& atlas)
        : frame_(frame),
          atlas_(atlas),
          width_(static_cast<int>(std::ceil(frame.width * frame.pixelRatio))),
          height_(static_cast<int>(std::ceil(frame.height * frame.pixelRatio))),
          samples_(static_cast<std::size_t>(width_) * grid * static_cast<std::size_t>(height_) * grid) {}

    void draw(const RecordedFrame::Draw& call) {
        const auto stride = vertexStride(call.pipeline);
        const auto& bytes =
            call.source < 0 ? frame_.stream : frame_.retained[static_cast<std::size_t>(call.source)]->bytes;
        std::vector<Corner> corners;
        for (std::size_t i = 0; i < call.vertexCount; ++i)
            corners.push_back(corner(call, bytes.data() + call.byteOffset + i * stride));
        const bool text = call.pipeline == Pipeline::text;
        if (call.primitive == Primitive::lines) {
            for (std::size_t i = 0; i + 1 < corners.size(); i += 2) line(corners[i], corners[i + 1]);
        } else if (call.primitive == Primitive::quads) {
            for (std::size_t i = 0; i + 3 < corners.size(); i += 4) {
                triangle(corners[i], corners[i + 1], corners[i + 2], text);
                triangle(corners[i], corners[i + 2], corners[i + 3], text);
            }
        } else {
            for (std::size_t i = 0; i + 2 < corners.size(); i += 3)
                triangle(corners[i], corners[i + 1], corners[i + 2], text);
        }
    }

    Raster resolve() const {
        Raster out;
        out.width = width_;
        out.height = height_;
        for (int y = 0; y < height_; ++y) {
            for (int x = 0; x < width_; ++x) {
                std::array<float, 3> low{1e9F, 1e9F, 1e9F}, high{-1e9F, -1e9F, -1e9F}, sum{};
                // One sample further on each side: hardware places its samples and rounds its edges differently.
                for (int sy = -1; sy <= grid; ++sy) {
                    for (int sx = -1; sx <= grid; ++sx) {
                        const bool inside = sy >= 0 && sx >= 0 && sy < grid && sx < grid;
                        const auto& sample = at(std::clamp(x * grid + sx, 0, width_ * grid - 1),
                                                std::clamp(y * grid + sy, 0, height_ * grid - 1));
                        for (std::size_t c = 0; c < 3; ++c) {
                            const float value = sample[c] * 255.0F;
                            low[c] = std::min(low[c], value);
                            high[c] = std::max(high[c], value);
                            if (inside) sum[c] += value / (grid * grid);
                        }
                    }
                }
                out.low.push_back(low);
                out.high.push_back(high);
                out.mean.push_back(sum);
            }
        }
        return out;
    }

 private:
    using Sample = std::array<float, 3>;
    const Sample& at(int x, int y) const {
        return samples_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_ * grid) +
                        static_cast<std::size_t>(x)];
    }

    Corner corner(const RecordedFrame::Draw& call, const std::byte* bytes) const {
        const auto& u = frame_.uniforms[call.uniforms];
        float f[12] = {};
        std::memcpy(f, bytes, vertexStride(call.pipeline));
        Corner out;
        double x = f[0] * u[0] + u[1], y = f[1] * u[2] + u[3];
        const float* color = f + 4;
        float alpha = 1;
        if (call.pipeline == Pipeline::ribbon) {
            const double dx = f[4] * u[0] * u[4] * 0.5, dy = f[5] * u[2] * u[5] * 0.5;
            const double len = std::max(std::hypot(dx, dy), 1e-6);
            x += -dy / len * f[3] * f[2] * 2 / u[4];
            y += dx / len * f[3] * f[2] * 2 / u[5];
            color = f + 8;
        } else if (call.pipeline == Pipeline::marker) {
            const double r = f[6] * u[7];
            x += f[4] * r * 2 / u[4];
            y += f[5] * r * 2 / u[5];
            color = f + 8;
            alpha = u[6];
        } else if (call.pipeline == Pipeline::text) {
            out.u = f[2] * atlas_.width();
            out.v = f[3] * atlas_.height();
        }
        std::copy_n(color, 4, out.color.begin());
        out.color[3] *= alpha;
        out.x = (x + 1) * 0.5 * frame_.width * frame_.pixelRatio;
        out.y = (1 - y) * 0.5 * frame_.height * frame_.pixelRatio;
        return out;
    }

    void line(const Corner& a, const Corner& b) {
        const double dx = b.x - a.x, dy = b.y - a.y, len = std::max(std::hypot(dx, dy), 1e-6);
        const double nx = -dy / len * 0.5, ny = dx / len * 0.5;
        const auto moved = [](Corner c, double x, double y) {
            c.x += x;
            c.y += y;
            return c;
        };
        triangle(moved(a, nx, ny), moved(a, -nx, -ny), moved(b, -nx, -ny), false);
        triangle(moved(a, nx, ny), moved(b, -nx, -ny), moved(b, nx, ny), false);
    }

    void triangle(Corner a, Corner b, Corner c, bool text) {
        const auto cross = [](const Corner& p, const Corner& q, double x, double y) {
            return (q.x - p.x) * (y - p.y) - (q.y - p.y) * (x - p.x);
        };
        double area = cross(a, b, c.x, c.y);
        if (area == 0) return;
        if (area < 0) {
            std::swap(b, c);
            area = -area;
        }
        // An edge shared by two triangles belongs to one of them.
        const auto covers = [](double weight, const Corner& p, const Corner& q) {
            return weight > 0 || (weight == 0 && (q.y < p.y || (q.y == p.y && q.x > p.x)));
        };
        const auto range = [](double p, double q, double r, int size) {
            const auto [lo, hi] = std::minmax({p, q, r});
            return std::pair(std::clamp(static_cast<int>(std::floor(lo * grid)), 0, size * grid),
                             std::clamp(static_cast<int>(std::ceil(hi * grid)) + 1, 0, size * grid));
        };
        const auto [x0, x1] = range(a.x, b.x, c.x, width_);
        const auto [y0, y1] = range(a.y, b.y, c.y, height_);
        for (int sy = y0; sy < y1; ++sy) {
            for (int sx = x0; sx < x1; ++sx) {
                const double x = (sx + 0.5) / grid, y = (sy + 0.5) / grid;
                const double wa = cross(b, c, x, y), wb = cross(c, a, x, y), wc = cross(a, b, x, y);
                if (!covers(wa, b, c) || !covers(wb, c, a) || !covers(wc, a, b)) continue;
                const auto mix = [&](double p, double q, double r) { return (p * wa + q * wb + r * wc) / area; };
                Rgba color;
                for (std::size_t i = 0; i < 4; ++i)
                    color[i] = static_cast<float>(mix(a.color[i], b.color[i], c.color[i]));
                if (text) color[3] *= coverage(mix(a.u, b.u, c.u), mix(a.v, b.v, c.v));
                blend(sx, sy, color);
            }
        }
    }

    float coverage(double u, double v) const {
        const int x = std::clamp(static_cast<int>(u), 0, atlas_.width() - 1);
        const int y = std::clamp(static_cast<int>(v), 0, atlas_.height() - 1);
        return static_cast<float>(atlas_.constScanLine(y)[x]) / 255.0F;
    }

    void blend(int x, int y, const Rgba& color) {
        auto& sample = const_cast<Sample&>(at(x, y));
        for (std::size_t i = 0; i < 3; ++i) sample[i] = color[i] * color[3] + sample[i] * (1 - color[3]);
    }

    const RecordedFrame& frame_;
    const QImage& atlas_;
    int width_, height_;
    std::vector<Sample> samples_;
};

}  // namespace

Raster rasterise(const RecordedFrame& frame, const QImage& atlas) {
    Canvas canvas(frame, atlas);
    for (const auto& call : frame.draws) canvas.draw(call);
    return canvas.resolve();
}

void expectSame(const QImage& image, const Raster& expected, double meanError) {
    // at a fractional ratio the last pixel may lie beyond the window
    ASSERT_GE(image.width(), expected.width - 1);
    ASSERT_GE(image.height(), expected.height - 1);
    int wrong = 0;
    double error = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb got = image.pixel(x, y);
            const auto at =
                static_cast<std::size_t>(y) * static_cast<std::size_t>(expected.width) + static_cast<std::size_t>(x);
            const std::array<int, 3> channels{qRed(got), qGreen(got), qBlue(got)};
            bool fits = true;
            for (std::size_t c = 0; c < 3; ++c) {
                const auto value = static_cast<float>(channels[c]);
                fits = fits && value >= expected.low[at][c] - 3 && value <= expected.high[at][c] + 3;
                error += std::abs(value - expected.mean[at][c]);
            }
            if (!fits && ++wrong <= 5) {
                ADD_FAILURE() << "at " << x << ", " << y << ": " << channels[0] << " " << channels[1] << " "
                              << channels[2] << ", expected about " << expected.mean[at][0] << " "
                              << expected.mean[at][1] << " " << expected.mean[at][2];
            }
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_LT(error / (3.0 * image.width() * image.height()), meanError);
}

}  // namespace vmr::test
