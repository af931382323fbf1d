#include "chart/CandleGeometry.h"

namespace vmr::CandleGeometry {

namespace {

constexpr Rgba classicUp{0.149F, 0.651F, 0.604F, 1.0F};
constexpr Rgba classicDown{0.937F, 0.325F, 0.314F, 1.0F};
constexpr Rgba white{1.0F, 1.0F, 1.0F, 1.0F};
constexpr Rgba monoDownFill{1.0F, 1.0F, 1.0F, 0.4F};
constexpr Look classicLooks[2] = {{classicDown, classicDown, classicDown, false},
                                  {classicUp, classicUp, classicUp, false}};
constexpr Look monoLooks[2] = {{monoDownFill, white, white, true}, {white, white, white, false}};

ChartVertex* put(ChartVertex* out, float x, float y, const Rgba8& color) {
    *out = {{x, y}, color};
    return out + 1;
}

ChartVertex* writeBox(ChartVertex* out, float x0, float x1, float top, float bot, const Rgba8& color) {
    out = put(out, x0, top, color);
    out = put(out, x0, bot, color);
    out = put(out, x1, bot, color);
    out = put(out, x0, top, color);
    out = put(out, x1, bot, color);
    return put(out, x1, top, color);
}

LineVertex* writeSide(LineVertex* out, float ax, float ay, float bx, float by, const Rgba8& color) {
    constexpr float halfWidthPx = 0.5F;
    const auto vertex = [&](float x, float y, float side) {
        *out++ = {{x, y}, {bx - ax, by - ay}, side * halfWidthPx, color};
    };
    vertex(ax, ay, 1.0F);
    vertex(ax, ay, -1.0F);
    vertex(bx, by, -1.0F);
    vertex(ax, ay, 1.0F);
    vertex(bx, by, -1.0F);
    vertex(bx, by, 1.0F);
    return out;
}

}  // namespace

const Look& look(std::string_view theme, bool up) {
    return (theme == "classic" ? classicLooks : monoLooks)[up ? 1 : 0];
}

ChartVertex* writeBody(ChartVertex* out, double x, double top, double bot, const Rgba& color) {
    return writeBox(out, static_cast<float>(x - halfBody), static_cast<float>(x + halfBody), static_cast<float>(top),
                    static_cast<float>(bot), color);
}

ChartVertex* writeWicks(ChartVertex* out, double x, double high, double top, double bot, double low,
                        const Rgba& color) {
    const auto w0 = static_cast<float>(x - halfWick);
    const auto w1 = static_cast<float>(x + halfWick);
    out = writeBox(out, w0, w1, static_cast<float>(high), static_cast<float>(top), color);
    return writeBox(out, w0, w1, static_cast<float>(bot), static_cast<float>(low), color);
}

LineVertex* appendBodyOutline(LineVertex* out, double x, double halfWidth, double top, double bot, const Rgba& color) {
    const auto x0 = static_cast<float>(x - halfWidth);
    const auto x1 = static_cast<float>(x + halfWidth);
    const auto t = static_cast<float>(top);
    const auto b = static_cast<float>(bot);
    out = writeSide(out, x0, t, x1, t, color);
    out = writeSide(out, x0, b, x1, b, color);
    out = writeSide(out, x0, b, x0, t, color);
    return writeSide(out, x1, b, x1, t, color);
}

}  // namespace vmr::CandleGeometry
