#include "chart/TradingLinesLayer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>

#include "chart/AxisScale.h"
#include "chart/ChartInput.h"

namespace vmr {

namespace {
constexpr Rgba buyColor{0.149F, 0.651F, 0.604F, 1.0F};
constexpr Rgba sellColor{0.937F, 0.325F, 0.314F, 1.0F};
constexpr Rgba plannedColor{0.6F, 0.6F, 0.6F, 1.0F};
constexpr Rgba backColor{0.04F, 0.04F, 0.04F, 0.92F};
constexpr TextStyle labelStyle{FontFace::regular, 11};
constexpr double boxHeight = ChartInput::closeMarkHeight, boxPadding = 6, markWidth = 18;  // points

template <class... Args>
void print(std::string& out, const char* format, Args... args) {
    char text[96];
    std::snprintf(text, sizeof text, format, args...);
    out = text;
}
}  // namespace

bool TradingLinesLayer::drawAbove(ScreenFrame& frame) {
    if (!trading || root.empty()) return false;
    trading->lines(root, lines_);
    shapes_.clear();
    labelCount_ = 0;
    for (const ProjectedLeg& leg : lines_.legs) {
        const Style style{plannedColor, 2, 4, false};
        addLine(frame, leg.price, style);
        addLabel(frame, leg.price, style, leg.leg);
    }
    for (const OrderLine& order : lines_.orders) {
        const Style style{order.buy ? buyColor : sellColor, 6, 4, true};
        addLine(frame, order.price, style);
        print(words_, "%s %lld %.*s", order.buy ? "BUY" : "SELL", static_cast<long long>(order.qty),
              static_cast<int>(order.kind.size()), order.kind.data());
        addLabel(frame, order.price, style, words_);
    }
    if (const auto& position = lines_.position) {
        const bool isLong = position->qty > 0;
        const Style style{isLong ? buyColor : sellColor, 0, 0, true};
        addLine(frame, position->avg, style);
        print(words_, "%s %lld", isLong ? "LONG" : "SHORT", static_cast<long long>(std::abs(position->qty)));
        addLabel(frame, position->avg, style, words_);
    }
    if (shapes_.empty()) return false;
    constexpr int attempts = 3;  // a new glyph may move the others
    const std::size_t lineShapes = shapes_.size();
    for (int attempt = 0; attempt < attempts; ++attempt) {
        shapes_.resize(lineShapes);
        text_.begin(frame.pixelRatio);
        addTexts(frame);
        if (!text_.stale()) break;
    }
    const auto upload = frame.arena.uploadDyn(shapes_);
    frame.gpu.setPipeline(Pipeline::flat);
    frame.gpu.setUniforms(
        std::bit_cast<std::array<float, 4>>(pixelUniforms(frame.width, frame.height, frame.pixelRatio)));
    frame.gpu.draw(Primitive::triangles, upload->buffer, upload->offset, upload->count);
    text_.draw(frame);
    return text_.stale();
}

void TradingLinesLayer::addLine(const ScreenFrame& frame, double price, const Style& style) {
    const double y = AxisScale::yFor(frame.viewport, price, frame.height);
    if (!(y >= 0 && y < frame.plot().bottom())) return;
    const double right = frame.plot().right(), pixel = 1 / frame.pixelRatio;
    Rgba color = style.color;
    color[3] = 0.8F;
    if (style.dash <= 0) return addRect(frame, 0, y, right, y + pixel, color);
    for (double x = 0; x < right; x += style.dash + style.gap)
        addRect(frame, x, y, std::min(x + style.dash, right), y + pixel, color);
}

void TradingLinesLayer::addLabel(const ScreenFrame& frame, double price, const Style& style, std::string_view label) {
    const double y = AxisScale::yFor(frame.viewport, price, frame.height);
    if (!ChartInput::closeMarkShown(y, frame.height)) return;
    if (labelCount_ == labels_.size()) labels_.emplace_back();
    Label& next = labels_[labelCount_++];
    next.y = y;
    next.color = style.color;
    next.closable = style.closable;
    next.text = label;
}

// Boxes end at the close marks' column; a later one lies over an earlier one.
void TradingLinesLayer::addTexts(const ScreenFrame& frame) {
    const double edge = ChartInput::closeMarkEdge(frame.width);
    const double right = edge + 2 - markWidth;
    const double pixel = 1 / frame.pixelRatio;
    for (std::size_t i = 0; i < labelCount_; ++i) {
        const Label& label = labels_[i];
        const double width = text_.width(label.text, labelStyle);
        const double left = right - width - 2 * boxPadding, end = label.closable ? edge + 2 : right;
        const double top = label.y - boxHeight / 2, bottom = label.y + boxHeight / 2;
        addRect(frame, left, top, end, bottom, label.color);
        addRect(frame, left + pixel, top + pixel, end - pixel, bottom - pixel, backColor);
        text_.add(label.text, labelStyle, left + boxPadding, label.y, TextAlign::left, label.color);
        if (!label.closable) continue;
        addRect(frame, right, top, right + pixel, bottom, label.color);
        addCross(frame, edge + 2 - markWidth / 2, label.y, label.color);
    }
}

void TradingLinesLayer::addRect(const ScreenFrame& frame, double x0, double y0, double x1, double y1,
                                const Rgba& color) {
    const auto pixel = [&](double v) { return static_cast<float>(std::round(v * frame.pixelRatio)); };
    const float left = pixel(x0), top = pixel(y0);
    const float right = std::max(pixel(x1), left + 1.0F), bottom = std::max(pixel(y1), top + 1.0F);
    for (const auto& [x, y] :
         {std::pair{left, top}, {left, bottom}, {right, bottom}, {left, top}, {right, bottom}, {right, top}})
        shapes_.push_back({{x, y, 0.0F, 1.0F}, color});
}

void TradingLinesLayer::addCross(const ScreenFrame& frame, double x, double y, const Rgba& color) {
    constexpr double reach = 3.0, half = 0.6;  // points
    const auto ratio = frame.pixelRatio;
    const auto vertex = [&](double dx, double dy) {
        shapes_.push_back({{static_cast<float>((x + dx) * ratio), static_cast<float>((y + dy) * ratio), 0, 1}, color});
    };
    for (const double slope : {1.0, -1.0}) {
        const auto corner = [&](double along, double across) {
            vertex(along * reach + across * half, (along * reach - across * half) * slope);
        };
        corner(-1, -1);
        corner(-1, 1);
        corner(1, 1);
        corner(-1, -1);
        corner(1, 1);
        corner(1, -1);
    }
}

}  // namespace vmr
