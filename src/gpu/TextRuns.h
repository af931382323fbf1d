// Short texts as quads of glyphs on whole device pixels.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "gpu/GlyphSource.h"
#include "gpu/Vertices.h"

namespace vmr {

/// How a text looks; size in points.
struct TextStyle {
    FontFace face = FontFace::regular;
    double pointSize = 11;
    bool operator==(const TextStyle&) const = default;
};

/// Where the given x lies in the text.
enum class TextAlign : unsigned char { left, center, right };

/// Collects the texts of a frame as vertices. A text that only moves or changes colour is not laid out again. Use:
/// `begin`, any number of `add`, then `vertices`; when `stale` tells so before that, once more from `begin`. UTF-8;
/// what is not valid shows as U+FFFD. Main thread.
class TextRuns {
 public:
    explicit TextRuns(GlyphSource& glyphs);

    void begin(double pixelRatio);

    /// Width in points.
    double width(std::string_view text, const TextStyle& style);
    /// Height of a line in points.
    double lineHeight(const TextStyle& style);

    /// One line, vertically centred on `y`; points from the top left. Tells how many vertices it added.
    std::size_t add(std::string_view text, const TextStyle& style, double x, double y, TextAlign align,
                    const Rgba& color);

    /// The atlas was rebuilt since `begin`: what was added before refers to glyphs that moved.
    bool stale() const { return glyphs_.generation() != generation_; }

    /// The glyphs of all that was added, as quads in the order of adding. Valid until the next `begin` or `add`.
    std::span<const TextVertex> vertices() const { return vertices_; }

 private:
    struct Quad {
        float x = 0, y = 0, width = 0, height = 0;
        float u0 = 0, v0 = 0, u1 = 0, v1 = 0;
    };
    struct Run {
        std::string text;
        TextStyle style;
        std::size_t hash = 0;
        bool used = false;
        unsigned long stamp = 0;
        float width = 0, height = 0;  ///< device pixels
        std::vector<Quad> quads;
    };
    const Run& run(std::string_view text, const TextStyle& style);
    void layOut(Run& run);

    static constexpr std::size_t sets_ = 64, ways_ = 4;
    GlyphSource& glyphs_;
    double pixelRatio_ = 0;
    unsigned generation_ = 0;
    unsigned long stamp_ = 0;
    std::vector<Run> runs_;
    std::vector<TextVertex> vertices_;
};

}  // namespace vmr
