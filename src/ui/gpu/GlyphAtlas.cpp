#include "ui/gpu/GlyphAtlas.h"

#include <QFont>
#include <QGlyphRun>
#include <QPainter>
#include <QTextLayout>
#include <algorithm>
#include <cmath>
#include <utility>

namespace vmr {

namespace {

constexpr int gap = 1;  // pixels between glyphs

int size64Of(double pointSize, double pixelRatio) {
    return static_cast<int>(std::lround(std::clamp(pointSize * pixelRatio, 1.0, 512.0) * 64));
}

std::uint64_t glyphKey(char32_t character, FontFace face, int size64) {
    return (static_cast<std::uint64_t>(character) << 24) | (static_cast<std::uint64_t>(size64) << 1) |
           (face == FontFace::semibold ? 1U : 0U);
}

}  // namespace

GlyphAtlas::GlyphAtlas(QString family, int side, int largestSide)
    : family_(std::move(family)), largestSide_(largestSide) {
    empty(side);
}

void GlyphAtlas::empty(int side) {
    if (image_.width() != side) image_ = QImage(side, side, QImage::Format_Grayscale8);
    image_.fill(0);
    places_.clear();
    pen_ = QPoint(gap, gap);
    rowHeight_ = 0;
    glyphs_.clear();
    ++generation_;
}

GlyphAtlas::Face& GlyphAtlas::faceFor(FontFace face, int size64) {
    const auto key = (static_cast<std::uint32_t>(size64) << 1) | (face == FontFace::semibold ? 1U : 0U);
    const auto [found, made] = faces_.try_emplace(key);
    Face& out = found->second;
    if (made) {
        out.request = QFont(family_);
        out.request.setWeight(face == FontFace::semibold ? QFont::DemiBold : QFont::Normal);
        out.request.setStyleStrategy(QFont::NoSubpixelAntialias);
        out.font = QRawFont::fromFont(out.request);
        out.font.setPixelSize(size64 / 64.0);
        out.request.setPixelSize(std::max(1, size64 / 64));
        out.ascent = static_cast<float>(std::round(out.font.ascent()));
        out.height = out.ascent + static_cast<float>(std::round(out.font.descent()));
    }
    return out;
}

float GlyphAtlas::lineHeight(FontFace face, double pointSize, double pixelRatio) {
    return faceFor(face, size64Of(pointSize, pixelRatio)).height;
}

const Glyph& GlyphAtlas::glyph(char32_t character, FontFace face, double pointSize, double pixelRatio) {
    if (pixelRatio != pixelRatio_) {
        if (pixelRatio_ != 0) {
            faces_.clear();
            empty(image_.width());
        }
        pixelRatio_ = pixelRatio;
    }
    const int size64 = size64Of(pointSize, pixelRatio);
    const auto key = glyphKey(character, face, size64);
    if (const auto found = glyphs_.find(key); found != glyphs_.end()) return found->second;
    const Face& from = faceFor(face, size64);
    const Glyph made = rasterise(rasterFor(character, from), from);
    return glyphs_.emplace(key, made).first->second;  // after rasterise, which may have emptied the map
}

// The face's own glyph; else what the platform's text layout finds in another font; else the face's box.
GlyphAtlas::Raster GlyphAtlas::rasterFor(char32_t character, const Face& face) const {
    const QString text = QString::fromUcs4(&character, 1);
    const auto own = face.font.glyphIndexesForString(text);
    if (!own.isEmpty() && own.first() != 0) return {face.font, own.first()};
    QTextLayout layout(text, face.request);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    for (const auto& run : layout.glyphRuns()) {
        const auto indices = run.glyphIndexes();
        if (!indices.isEmpty() && indices.first() != 0) return {run.rawFont(), indices.first()};
    }
    return {face.font, 0};
}

Glyph GlyphAtlas::rasterise(const Raster& raster, const Face& face) {
    Glyph out;
    const QList<quint32> index{raster.index};
    const auto advances = raster.font.advancesForGlyphIndexes(index);
    out.advance = advances.isEmpty() ? 0 : static_cast<float>(std::round(advances.first().x()));
    const QRectF ink = raster.font.boundingRect(raster.index);
    if (ink.isEmpty()) return out;
    // One pixel more on every side: antialiasing and hinting reach beyond the outline.
    const QRect box = ink.toAlignedRect().adjusted(-1, -1, 1, 1);

    QImage canvas(box.size(), QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    QGlyphRun run;
    run.setRawFont(raster.font);
    run.setGlyphIndexes(index);
    run.setPositions({QPointF(0, 0)});
    QPainter painter(&canvas);
    painter.setPen(Qt::white);
    painter.drawGlyphRun(QPointF(-box.left(), -box.top()), run);
    painter.end();

    const auto at = place(box.size());
    if (!at) return out;
    for (int y = 0; y < box.height(); ++y) {
        const auto* from = reinterpret_cast<const QRgb*>(canvas.constScanLine(y));
        uchar* to = image_.scanLine(at->y() + y) + at->x();
        for (int x = 0; x < box.width(); ++x) to[x] = static_cast<uchar>(qAlpha(from[x]));
    }
    places_.emplace_back(*at, box.size());
    const auto side = static_cast<float>(image_.width());
    out.u0 = static_cast<float>(at->x()) / side;
    out.v0 = static_cast<float>(at->y()) / side;
    out.u1 = static_cast<float>(at->x() + box.width()) / side;
    out.v1 = static_cast<float>(at->y() + box.height()) / side;
    out.left = static_cast<float>(box.left());
    out.top = face.ascent + static_cast<float>(box.top());
    out.width = static_cast<float>(box.width());
    out.height = static_cast<float>(box.height());
    return out;
}

// Rows from the top. Nothing for a glyph that no empty atlas could hold.
std::optional<QPoint> GlyphAtlas::place(QSize size) {
    if (std::max(size.width(), size.height()) + 2 * gap > largestSide_) return std::nullopt;
    for (;;) {
        const int side = image_.width();
        if (pen_.x() + size.width() + gap > side) {
            pen_ = QPoint(gap, pen_.y() + rowHeight_ + gap);
            rowHeight_ = 0;
        }
        if (pen_.x() + size.width() + gap <= side && pen_.y() + size.height() + gap <= side) break;
        empty(std::min(side * 2, largestSide_));
    }
    const QPoint out = pen_;
    pen_.rx() += size.width() + gap;
    rowHeight_ = std::max(rowHeight_, size.height());
    return out;
}

std::optional<GlyphAtlas::Change> GlyphAtlas::changeSince(Seen& seen) const {
    QRect part = seen.generation == generation_ ? QRect() : image_.rect();
    if (part.isEmpty())
        for (std::size_t i = seen.glyphs; i < places_.size(); ++i) part = part.united(places_[i]);
    seen = {generation_, places_.size()};
    if (part.isEmpty()) return std::nullopt;
    return Change{part.topLeft(), image_.copy(part)};
}

}  // namespace vmr
