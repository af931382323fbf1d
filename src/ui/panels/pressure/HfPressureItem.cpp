#include "ui/panels/pressure/HfPressureItem.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vmr {

namespace {
constexpr float staleOpacity = 0.45F;
PointRect points(const QRectF& rect) { return {rect.x(), rect.y(), rect.width(), rect.height()}; }
}  // namespace

HfPressureItem::HfPressureItem(QQuickItem* parent)
    : FrameItem(parent), plot_(std::make_unique<HfPressurePlot>(glyphs(), clock_)) {}

void HfPressureItem::setPane(PaneViewModel* pane) {
    if (pane == pane_) return;
    if (pane_) disconnect(&pane_->pressure, nullptr, this, nullptr);
    pane_ = pane;
    plot_ = std::make_unique<HfPressurePlot>(glyphs(), clock_, pane ? pane->surroundings().perf : nullptr);
    if (pane_) {
        HfPressureViewModel* model = &pane_->pressure;
        connect(model, &HfPressureViewModel::samplesChanged, this, [this] { requestCalmFrame(); });
        connect(model, &HfPressureViewModel::windowMinChanged, this, [this] { requestFrame(); });
        connect(model, &HfPressureViewModel::staleChanged, this, [this] { requestFrame(); });
    }
    requestFrame();
    emit paneChanged();
}

void HfPressureItem::setPlace(QRectF& place, const QRectF& now) {
    if (std::exchange(place, now) == now) return;
    requestFrame();
    emit placesChanged();
}

void HfPressureItem::placeSpark(double strike, const QRectF& place) {
    if (std::isnan(strike)) return;
    if (place.isEmpty())
        sparks_.erase(strike);
    else
        sparks_[strike] = place;
    requestFrame();
}

HfPressurePlot::Places HfPressureItem::places(const HfPressure::Samples& samples) const {
    HfPressurePlot::Places out;
    out.main = points(main_);
    out.strip = points(strip_);
    const auto band = HfPressure::ladder(samples).band;
    for (std::size_t i = 0; i < std::min(band.size(), out.sparks.size()); ++i)
        if (const auto at = sparks_.find(band[i]); at != sparks_.end()) out.sparks[i] = points(at->second);
    return out;
}

bool HfPressureItem::record(Gpu& gpu, QSizeF size, double pixelRatio, double) {
    static const HfPressure::Samples none;
    const HfPressure::Samples& samples = pane_ ? pane_->pressure.samples() : none;
    const float opacity = pane_ && pane_->pressure.stale() ? staleOpacity : 1;
    gpu.beginFrame(size.width(), size.height(), pixelRatio);
    arena_.beginFrame();
    PaintSurface surface{gpu, arena_, size.width(), size.height(), pixelRatio};
    const bool again = plot_->draw(surface, samples, places(samples), opacity);
    gpu.endFrame();
    return again;
}

void HfPressureItem::tellStrip() {
    QStringList texts;
    for (const HfPressure::StripTick& tick : plot_->stripTicks())
        if (tick.text.size > 0) texts << QString::fromUtf8(tick.text.text().data(), static_cast<int>(tick.text.size));
    if (std::exchange(stripTexts_, texts) != texts) emit stripTextsChanged();
}

void HfPressureItem::frameShown() {
    tellStrip();
    if (std::exchange(calm_, drawnBySoftware()) != calm_) emit calmChanged();
}

}  // namespace vmr
