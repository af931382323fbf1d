#include "ui/chart/CrosshairState.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "chart/AxisScale.h"

namespace vmr {

namespace {
QString text(const AxisScale::Label& label) {
    const std::string_view chars = label.text();
    return QString::fromUtf8(chars.data(), static_cast<qsizetype>(chars.size()));
}

void copyTo(QList<qreal>& list, const std::vector<AxisLayer::Extent>& labels) {
    list.clear();
    for (const auto& [from, to] : labels) list << from << to;
}
}  // namespace

void CrosshairState::setOscHoverPoint(std::optional<ChartPoint> point, double height,
                                      const OscGeometry::Labels& labels) {
    oscHoverPoint_ = point && height > 0 && point->y >= 0 && point->y <= height ? point : std::nullopt;
    if (!oscHoverPoint_) return;
    oscillatorText_ = text(OscGeometry::valueText(OscGeometry::valueAt(point->y, height)));
    oscillatorLabels_.clear();
    for (const auto& label : labels.span())
        oscillatorLabels_ << label.y - OscGeometry::halfLabel << label.y + OscGeometry::halfLabel;
    for (double value = -OscGeometry::limit; value <= OscGeometry::limit; value += OscGeometry::scaleStep) {
        const double y = OscGeometry::yFor(value, height);
        oscillatorLabels_ << y - OscGeometry::halfScaleText << y + OscGeometry::halfScaleText;
    }
}

void CrosshairState::update(const Viewport& viewport, std::span<const Candle> candles, double width, double height,
                            SessionTime& session, const AxisLayer::Labels& labels) {
    const bool wasShown = std::exchange(shown_, crossX().has_value() && !candles.empty());
    if (!shown_) {
        if (wasShown) emit changed();
        return;
    }
    if (mousePoint_) priceText_ = text(AxisScale::fmtPrice(AxisScale::priceAtY(viewport, mousePoint_->y, height)));
    const double index = std::round(viewport.first + x() / std::max(width, 1.0) * viewport.count);
    timeText_.clear();
    if (index >= 0 && index < static_cast<double>(candles.size())) {
        const std::int64_t time = candles[static_cast<std::size_t>(index)].time;
        timeText_ = text(AxisScale::fmtTime(session, time, true)) + QStringLiteral("  ") +
                    text(AxisScale::fmtTime(session, time, false));
    }
    copyTo(priceLabels_, labels.prices);
    copyTo(timeLabels_, labels.times);
    takeBoxes(labels);
    emit changed();
}

// True where they are others than before. With each frame, so that its lists are used again.
bool CrosshairState::takeBoxes(const AxisLayer::Labels& labels) {
    boxes_.assign(labels.tags.begin(), labels.tags.end());
    for (const AxisLayer::Extent& box : {labels.lastPrice, labels.countdown})
        if (box.from < box.to) boxes_.push_back(box);
    std::ranges::sort(boxes_, {}, &AxisLayer::Extent::from);
    std::size_t count = 0;
    for (const AxisLayer::Extent box : boxes_) {
        if (count > 0 && box.from <= boxes_[count - 1].to)
            boxes_[count - 1].to = std::max(boxes_[count - 1].to, box.to);
        else
            boxes_[count++] = box;
    }
    boxes_.resize(count);
    const auto asBefore = [&](std::size_t i) {
        const auto at = static_cast<qsizetype>(2 * i);
        return priceBoxes_.at(at) == boxes_[i].from && priceBoxes_.at(at + 1) == boxes_[i].to;
    };
    bool same = priceBoxes_.size() == static_cast<qsizetype>(2 * count);
    for (std::size_t i = 0; same && i < count; ++i) same = asBefore(i);
    if (!same) copyTo(priceBoxes_, boxes_);
    return !same;
}

void CrosshairState::updateBoxes(const AxisLayer::Labels& labels) {
    if (shown_ && takeBoxes(labels)) emit changed();
}

}  // namespace vmr
