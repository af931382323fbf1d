// Glyphs of the plots' texts, rasterised once into one image of 8 bits a pixel.
#pragma once

#include <QImage>
#include <QRawFont>
#include <QRect>
#include <QString>
#include <array>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "gpu/GlyphSource.h"

namespace vmr {

/// Rasterises with the platform's own text engine, so that the plots' texts look like native ones. Main thread;
/// `changeSince` also while the main thread is blocked. A full atlas grows to `maxSide` and is then emptied, and a new
/// pixel ratio empties it: both raise `generation`, and references given before are dead. The fonts of the family must
/// be registered.
class GlyphAtlas final : public GlyphSource {
 public:
    static constexpr int firstSide = 512;
    static constexpr int maxSide = 2048;

    explicit GlyphAtlas(QString family, int side = firstSide, int largestSide = maxSide);

    const Glyph& glyph(char32_t character, FontFace face, double pointSize, double pixelRatio) override;
    float lineHeight(FontFace face, double pointSize, double pixelRatio) override;
    unsigned generation() const override { return generation_; }

    QSize size() const { return image_.size(); }
    const QImage& image() const { return image_; }

    struct Change {
        QPoint at;
        QImage pixels;
    };
    /// How much of the atlas one texture holds; as made, nothing.
    struct Seen {
        unsigned generation = 0;
        std::size_t glyphs = 0;
    };
    /// What `seen` lacks, as a copy, and brings `seen` up to date. Nothing when it lacks nothing.
    std::optional<Change> changeSince(Seen& seen) const;

 private:
    struct Face {
        QRawFont font;
        QFont request;
        float ascent = 0;
        float height = 0;
    };
    struct Raster {
        QRawFont font;
        quint32 index = 0;
    };
    Face& faceFor(FontFace face, int size64);
    Raster rasterFor(char32_t character, const Face& face) const;
    Glyph rasterise(const Raster& raster, const Face& face);
    std::optional<QPoint> place(QSize size);
    void empty(int side);

    QString family_;
    int largestSide_;
    double pixelRatio_ = 0;
    unsigned generation_ = 1;
    QImage image_;
    std::vector<QRect> places_;  // of this generation's glyphs, in the order in which they came
    QPoint pen_;                 // where the next glyph of the current row goes
    int rowHeight_ = 0;
    std::unordered_map<std::uint64_t, Glyph> glyphs_;
    std::unordered_map<std::uint32_t, Face> faces_;
};

}  // namespace vmr
