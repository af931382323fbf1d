#include "ui/chart/MarkSampleItem.h"

#include <QVariantMap>
#include <cmath>
#include <utility>

namespace vmr {

namespace {
QString text(std::string_view utf8) { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); }
}  // namespace

MarkSampleItem::MarkSampleItem(QQuickItem* parent)
    : FrameItem(parent), samples_({gpu(), glyphs(), session_, clock_, loop_}) {}

void MarkSampleItem::setPane(PaneViewModel* pane) {
    if (pane == pane_) return;
    pane_ = pane;
    requestFrame();
    emit paneChanged();
}

void MarkSampleItem::setContentY(qreal y) {
    if (std::exchange(contentY_, y) == y) return;
    requestFrame();
    emit contentYChanged();
}

QVariantList MarkSampleItem::marks() {
    QVariantList out;
    for (const ChartMark& mark : chartMarks())
        out.push_back(QVariantMap{{QStringLiteral("id"), text(mark.id)},
                                  {QStringLiteral("name"), text(mark.name)},
                                  {QStringLiteral("meaning"), text(mark.meaning)}});
    return out;
}

void MarkSampleItem::readLook() {
    const ChartSource* source = pane_ ? pane_->chart.source() : nullptr;
    if (!source) return;
    const ChartContent content = source->chartContent();
    samples_.setLook(content.look ? *content.look : RenderConfig{}, content.overlayStyle);
}

bool MarkSampleItem::record(Gpu& gpu, QSizeF size, double pixelRatio, double) {
    readLook();
    gpu.beginFrame(size.width(), size.height(), pixelRatio);
    const auto onPixel = [&](double points) { return std::round(points * pixelRatio) / pixelRatio; };
    for (std::size_t i = 0; i < chartMarks().size(); ++i) {
        const double y = static_cast<double>(i) * rowHeight() - contentY_ + (rowHeight() - MarkSamples::height) / 2;
        if (y > -MarkSamples::height && y < size.height())
            samples_.draw(i, 0, onPixel(y), size.width(), size.height(), pixelRatio);
    }
    gpu.endFrame();
    return false;
}

}  // namespace vmr
