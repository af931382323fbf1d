#include "ui/panels/sim/EquityPlot.h"

#include <utility>

#include "ui/widgets/ArtNode.h"
#include "workspace/EquityArt.h"

namespace vmr {

namespace {
EquityColor colorOf(const QColor& color) {
    return {static_cast<std::uint8_t>(color.red()), static_cast<std::uint8_t>(color.green()),
            static_cast<std::uint8_t>(color.blue())};
}
}  // namespace

EquityPlot::EquityPlot(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    connect(this, &EquityPlot::lookChanged, this, &EquityPlot::change);
}

void EquityPlot::setSim(SimViewModel* sim) {
    if (sim == sim_) return;
    if (sim_) sim_->disconnect(this);
    sim_ = sim;
    if (sim_) connect(sim_, &SimViewModel::performanceChanged, this, &EquityPlot::take);
    emit simChanged();
    take();
}

// A curve that is the same is not drawn anew.
void EquityPlot::take() {
    SimCurvePlot plot = sim_ ? simCurvePlot(sim_->performance().curve) : SimCurvePlot();
    const bool same = plot.points == plot_.points && plot.base == plot_.base && plot.gain == plot_.gain;
    plot_ = std::move(plot);
    if (!same) change();
    aim(!same);
}

void EquityPlot::change() {
    changed_ = true;
    update();
}

void EquityPlot::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() == before.size()) return;
    change();
    emit spotChanged();
}

void EquityPlot::point(qreal x) {
    pointer_ = x;
    aim(false);
}

// `moved`: the curve is another one under the pointer, so the same trade stands elsewhere.
void EquityPlot::aim(bool moved) {
    const auto found = pointer_ >= 0 && sim_ && width() > 0
                           ? simCurveSpot(sim_->performance().curve, pointer_ / width())
                           : std::nullopt;
    const int spot = found && !plot_.points.empty() ? static_cast<int>(found->index) : -1;
    const QString text = spot >= 0 ? QString::fromStdString(found->text) : QString();
    if (spot == spot_ && text == spotText_ && !(moved && spot >= 0)) return;
    spot_ = spot;
    spotText_ = text;
    emit spotChanged();
}

QPointF EquityPlot::spotPlace() const {
    if (spot_ < 0 || spot_ >= static_cast<int>(plot_.points.size())) return {};
    const auto& point = plot_.points[static_cast<std::size_t>(spot_)];
    return {point.x * width(), point.y * height()};
}

QSGNode* EquityPlot::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    if (plot_.points.empty() || width() <= 0 || height() <= 0) {
        delete old;
        changed_ = true;
        return nullptr;
    }
    if (old && !changed_) return old;
    changed_ = false;
    makeEquityArt(plot_, width(), height(), colorOf(gain_), colorOf(loss_), vertices_);
    return artNode(old, vertices_);
}

}  // namespace vmr
