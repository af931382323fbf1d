#include "gpu/TextRuns.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>

namespace vmr {

namespace {

constexpr char32_t replacement = 0xFFFD;

/// Takes one character off the front of `text`, which is not empty.
char32_t takeCharacter(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byte(0);
    const std::size_t length = lead < 0x80                   ? 1
                               : lead >= 0xC2 && lead < 0xE0 ? 2
                               : (lead & 0xF0) == 0xE0       ? 3
                               : lead >= 0xF0 && lead < 0xF5 ? 4
                                                             : 0;
    if (length == 1) {
        text.remove_prefix(1);
        return lead;
    }
    char32_t value = length == 0 ? replacement : lead & (0x7FU >> length);
    std::size_t used = 1;
    for (; used < length; ++used) {
        if (used >= text.size() || (byte(used) & 0xC0) != 0x80) break;
        value = value << 6 | (byte(used) & 0x3FU);
    }
    text.remove_prefix(used);
    constexpr char32_t least[5] = {0, 0, 0x80, 0x800, 0x10000};
    const bool valid =
        used == length && value >= least[length] && value <= 0x10FFFF && !(value >= 0xD800 && value < 0xE000);
    return valid ? value : replacement;
}

}  // namespace

TextRuns::TextRuns(GlyphSource& glyphs) : glyphs_(glyphs), runs_(sets_ * ways_) {
    for (Run& run : runs_) {
        run.text.reserve(32);
        run.quads.reserve(16);
    }
    vertices_.reserve(4096);
}

void TextRuns::begin(double pixelRatio) {
    vertices_.clear();
    if (pixelRatio == pixelRatio_ && !stale()) return;
    pixelRatio_ = pixelRatio;
    generation_ = glyphs_.generation();
    for (Run& run : runs_) run.used = false;
}

const TextRuns::Run& TextRuns::run(std::string_view text, const TextStyle& style) {
    const std::size_t hash = std::hash<std::string_view>{}(text) ^ (std::bit_cast<std::uint64_t>(style.pointSize) * 31 +
                                                                    static_cast<std::size_t>(style.face));
    Run* const set = &runs_[hash % sets_ * ways_];
    Run* victim = set;
    for (Run* run = set; run != set + ways_; ++run) {
        if (run->used && run->hash == hash && run->style == style && run->text == text) {
            run->stamp = ++stamp_;
            return *run;
        }
        if (!run->used || (victim->used && run->stamp < victim->stamp)) victim = run;
    }
    victim->text.assign(text);
    victim->style = style;
    victim->hash = hash;
    victim->used = true;
    victim->stamp = ++stamp_;
    layOut(*victim);
    return *victim;
}

void TextRuns::layOut(Run& run) {
    run.quads.clear();
    float pen = 0;
    for (std::string_view rest = run.text; !rest.empty();) {
        const Glyph glyph = glyphs_.glyph(takeCharacter(rest), run.style.face, run.style.pointSize, pixelRatio_);
        if (glyph.width > 0 && glyph.height > 0) {
            run.quads.push_back({std::round(pen + glyph.left), std::round(glyph.top), glyph.width, glyph.height,
                                 glyph.u0, glyph.v0, glyph.u1, glyph.v1});
        }
        pen += glyph.advance;
    }
    run.width = pen;
    run.height = glyphs_.lineHeight(run.style.face, run.style.pointSize, pixelRatio_);
}

double TextRuns::width(std::string_view text, const TextStyle& style) { return run(text, style).width / pixelRatio_; }

double TextRuns::lineHeight(const TextStyle& style) {
    return glyphs_.lineHeight(style.face, style.pointSize, pixelRatio_) / pixelRatio_;
}

std::size_t TextRuns::add(std::string_view text, const TextStyle& style, double x, double y, TextAlign align,
                          const Rgba& color) {
    const Run& laid = run(text, style);
    const Rgba8 paint = color;
    const double share = align == TextAlign::left ? 0.0 : align == TextAlign::center ? 0.5 : 1.0;
    const auto left = static_cast<float>(std::round(x * pixelRatio_ - laid.width * share));
    const auto top = static_cast<float>(std::round(y * pixelRatio_ - laid.height * 0.5));
    for (const Quad& quad : laid.quads) {
        const float x0 = left + quad.x, y0 = top + quad.y;
        const float x1 = x0 + quad.width, y1 = y0 + quad.height;
        vertices_.push_back({{x0, y0}, {quad.u0, quad.v0}, paint});
        vertices_.push_back({{x0, y1}, {quad.u0, quad.v1}, paint});
        vertices_.push_back({{x1, y1}, {quad.u1, quad.v1}, paint});
        vertices_.push_back({{x1, y0}, {quad.u1, quad.v0}, paint});
    }
    return laid.quads.size() * 4;
}

}  // namespace vmr
