#include "workspace/SignInArt.h"

#include <algorithm>
#include <cmath>

namespace vmr {

namespace {

struct Rgb {
    int red, green, blue;
};
constexpr Rgb risingColor{38, 166, 154}, fallingColor{239, 83, 80}, lineColor{255, 255, 255}, meanColor{255, 194, 8};
constexpr Rgb topColor{14, 22, 24}, bottomColor{10, 10, 10};

/// Puts shapes into the list of triangles.
class Brush {
 public:
    explicit Brush(std::vector<ArtVertex>& out) : out_(out) {}

    static ArtVertex corner(double x, double y, Rgb color, double opacity) {
        const auto part = [opacity](int value) { return static_cast<std::uint8_t>(std::lround(value * opacity)); };
        return {static_cast<float>(x), static_cast<float>(y), part(color.red),
                part(color.green),     part(color.blue),      part(255)};
    }
    /// Corners in the order in which one draws a Z.
    void quad(const ArtVertex& a, const ArtVertex& b, const ArtVertex& c, const ArtVertex& d) {
        for (const ArtVertex& vertex : {a, b, c, c, b, d}) out_.push_back(vertex);
    }
    /// The opacity goes from the left edge's to the right edge's.
    void box(double x, double y, double width, double height, Rgb color, double left, double right) {
        quad(corner(x, y, color, left), corner(x + width, y, color, right), corner(x, y + height, color, left),
             corner(x + width, y + height, color, right));
    }
    void box(double x, double y, double width, double height, Rgb color, double opacity) {
        box(x, y, width, height, color, opacity, opacity);
    }
    /// A piece of a line whose edges fade out.
    void stroke(double x0, double y0, double x1, double y1, Rgb color, double left, double right) {
        constexpr double half = 0.9, fade = 1.0;
        const auto band = [&](double from, double fromShare, double to, double toShare) {
            quad(corner(x0, y0 + from, color, left * fromShare), corner(x1, y1 + from, color, right * fromShare),
                 corner(x0, y0 + to, color, left * toShare), corner(x1, y1 + to, color, right * toShare));
        };
        band(-half - fade, 0, -half, 1);
        band(-half, 1, half, 1);
        band(half, 1, half + fade, 0);
    }

 private:
    std::vector<ArtVertex>& out_;
};

/// Between -1 and 1, the same for the same number.
double noise(int number) {
    const double wild = std::sin(number * 127.1 + 11.7) * 43758.5453;
    return 2 * (wild - std::floor(wild)) - 1;
}

constexpr double candleStep = 15, candleWidth = 8, strikeStep = 15, strikeHeight = 9;
constexpr double candleShare = 0.76;  // of the width
constexpr double profileShare = 0.30;

/// The height of the picture's price at a candle, as a share of the area: 0 at the top.
double mean(double i, double t) {
    return 0.52 - 0.14 * std::sin(0.105 * i + 0.6 + 0.050 * t) - 0.07 * std::sin(0.31 * i - 0.083 * t) -
           0.035 * std::sin(0.73 * i + 1.9 + 0.11 * t);
}
double closeOf(int i, double t) {
    return mean(i, t) + 0.026 * noise(i) * (1 + 0.3 * std::sin(0.4 * t + 5 * noise(-i)));
}

void addGround(Brush& brush, double width, double height) {
    brush.quad(Brush::corner(0, 0, topColor, 1), Brush::corner(width, 0, topColor, 1),
               Brush::corner(0, height, bottomColor, 1), Brush::corner(width, height, bottomColor, 1));
    constexpr int lines = 7;
    for (int i = 1; i < lines; ++i) {
        brush.box(0, std::round(height * i / lines), width, 1, lineColor, 0.035);
        brush.box(std::round(width * i / lines), 0, 1, height, lineColor, 0.025);
    }
}

void addCandles(Brush& brush, double width, double height, double t) {
    const int count = static_cast<int>(width * candleShare / candleStep);
    for (int i = 0; i < count; ++i) {
        const double open = closeOf(i - 1, t) * height, close = closeOf(i, t) * height;
        const double top = std::min(open, close), low = std::max(open, close);
        const double wickUp = 0.020 * height * std::abs(noise(3 * i + 1)),
                     wickDown = 0.020 * height * std::abs(noise(3 * i + 2));
        const double opacity = 0.10 + 0.80 * std::pow((i + 1.0) / count, 1.4);
        const Rgb color = close <= open ? risingColor : fallingColor;
        const double x = std::round(i * candleStep + 6);
        brush.box(x + candleWidth / 2 - 0.5, top - wickUp, 1, low - top + wickUp + wickDown, color, opacity * 0.8);
        brush.box(x, top, candleWidth, std::max(1.0, low - top), color, opacity);
    }
    for (int i = 0; i + 1 < count; ++i) {
        const auto at = [&](int k) { return (mean(k - 2.5, t) + 0.012) * height; };
        const auto opacity = [&](int k) { return 0.55 * std::pow((k + 1.0) / count, 1.2); };
        const double x = i * candleStep + 10;
        brush.stroke(x, at(i), x + candleStep, at(i + 1), meanColor, opacity(i), opacity(i + 1));
    }
}

void addProfile(Brush& brush, double width, double height, double t) {
    const int count = static_cast<int>(height / strikeStep);
    const auto hill = [](double at, double middle, double spread) {
        return std::exp(-(at - middle) * (at - middle) / (2 * spread * spread));
    };
    for (int i = 0; i < count; ++i) {
        const double at = (i + 0.5) / count;
        const double shape = 0.85 * hill(at, 0.27 + 0.01 * std::sin(0.09 * t), 0.085) + 0.35 * hill(at, 0.47, 0.06) +
                             0.70 * hill(at, 0.70 - 0.01 * std::sin(0.07 * t), 0.10) + 0.05;
        const double length =
            width * profileShare * shape * (0.72 + 0.28 * std::abs(noise(7 * i))) * (1 + 0.05 * std::sin(0.5 * t + i));
        brush.box(width - length, std::round(i * strikeStep + 3), length, strikeHeight,
                  at < 0.56 ? risingColor : fallingColor, 0.10, 0.62);
    }
}

// Where the price stands: a dotted line from the last candle to the edge.
void addLast(Brush& brush, double width, double height, double t) {
    const int count = static_cast<int>(width * candleShare / candleStep);
    const double y = std::round(closeOf(count - 1, t) * height);
    constexpr double dot = 2, gap = 5;
    for (double x = std::round(count * candleStep); x < width; x += dot + gap) brush.box(x, y, dot, 1, lineColor, 0.5);
}

}  // namespace

void makeSignInArt(double width, double height, double seconds, std::vector<ArtVertex>& out) {
    out.clear();
    if (!(width > 0 && height > 0)) return;
    Brush brush(out);
    addGround(brush, width, height);
    addProfile(brush, width, height, seconds);
    addCandles(brush, width, height, seconds);
    addLast(brush, width, height, seconds);
}

}  // namespace vmr
