#include "ui/chart/HudState.h"

#include <utility>

namespace vmr {

namespace {
QString text(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }

bool take(AxisLayer::Extent& shown, const AxisLayer::Extent& now) {
    const AxisLayer::Extent before = std::exchange(shown, now);
    return before.from != now.from || before.to != now.to;
}
}  // namespace

void HudValue::set(const HudSegment& segment) {
    const bool sameLabel = segment.label == shown_.label, sameValue = segment.value.text() == shown_.value.text();
    if (sameLabel && sameValue && segment.tone == shown_.tone) return;
    shown_ = segment;
    if (!sameLabel) label_ = text(segment.label);
    if (!sameValue) value_ = text(segment.value.text());
    emit changed();
}

// What has a parent is never QML's to end.
HudState::HudState(QObject* parent) : QObject(parent) {
    for (HudValue& value : values_) value.setParent(this);
}

void HudState::update(const std::optional<HudText>& line, const std::optional<AxisLayer::Extent>& lit,
                      const AxisLayer::Extent& countdown) {
    if (line)
        for (std::size_t i = 0; i < values_.size(); ++i) values_[i].set(line->segments[i]);
    if (std::exchange(shown_, line.has_value()) != line.has_value()) emit shownChanged();
    if (take(lit_, lit.value_or(AxisLayer::Extent{}))) emit litChanged();
    if (take(countdown_, countdown)) emit countdownChanged();
}

QList<QObject*> HudState::values(std::size_t from, std::size_t to) {
    QList<QObject*> list;
    for (std::size_t i = from; i < to; ++i) list.push_back(&values_[i]);
    return list;
}

}  // namespace vmr
