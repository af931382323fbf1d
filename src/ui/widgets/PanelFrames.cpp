#include "ui/widgets/PanelFrames.h"

#include <utility>

#include "base/Preferences.h"
#include "workspace/PanelPlacing.h"

namespace vmr {

namespace {
PanelSize sizeOf(const QSizeF& size) { return {size.width(), size.height()}; }
}  // namespace

void PanelFrames::keepIn(Preferences* preferences, Follower follower) {
    preferences_ = preferences;
    follower_ = std::move(follower);
}

qreal PanelFrames::titleHeight() const { return panelTitleHeight; }

qreal PanelFrames::step() const { return panelStep; }

QRectF PanelFrames::restored(const QString& id, const QRectF& otherwise) const {
    const auto text = preferences_ ? preferences_->get(panelKey(id.toStdString())) : std::nullopt;
    const StoredPanel stored = text ? parsePanel(*text) : StoredPanel();
    return {stored.x.value_or(otherwise.x()), stored.y.value_or(otherwise.y()),
            stored.width.value_or(otherwise.width()), stored.height.value_or(otherwise.height())};
}

void PanelFrames::keep(const QString& id, const QRectF& frame) {
    if (preferences_)
        preferences_->set(panelKey(id.toStdString()),
                          panelText({frame.x(), frame.y()}, {frame.width(), frame.height()}));
}

void PanelFrames::moved(const QString& id, const QRectF& frame) {
    if (follower_) follower_(id, frame);
}

void PanelFrames::closed(const QString& id) {
    if (follower_) follower_(id, std::nullopt);
}

QSizeF PanelFrames::clampedSize(const QSizeF& size, const QSizeF& minimum, const QSizeF& area,
                                qreal contentHeight) const {
    const PanelSize out = vmr::clampedSize(sizeOf(size), sizeOf(minimum), sizeOf(area), contentHeight);
    return {out.width, out.height};
}

QPointF PanelFrames::clampedPos(const QPointF& pos, const QSizeF& size, const QSizeF& area) const {
    const PanelPos out = vmr::clampedPos({pos.x(), pos.y()}, sizeOf(size), sizeOf(area));
    return {out.x, out.y};
}

}  // namespace vmr
