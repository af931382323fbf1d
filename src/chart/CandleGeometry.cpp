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

}  // namespace

const Look& look(std::string_view theme, bool up) {
    return (theme == "classic" ? classicLooks : monoLooks)[up ? 1 : 0];
}

BoxVertex* writeBody(BoxVertex* out, double x, double top, double bot, const Rgba& color) {
    return writeBox(out, static_cast<float>(x - halfBody), static_cast<float>(top), static_cast<float>(x + halfBody),
                    static_cast<float>(bot), color);
}

BoxVertex* writeWicks(BoxVertex* out, double x, double high, double top, double bot, double low, const Rgba& color) {
    const auto w0 = static_cast<float>(x - halfWick);
    const auto w1 = static_cast<float>(x + halfWick);
    const Rgba8 paint = color;
    out = writeBox(out, w0, static_cast<float>(high), w1, static_cast<float>(top), paint);
    return writeBox(out, w0, static_cast<float>(bot), w1, static_cast<float>(low), paint);
}

LineVertex* appendBodyOutline(LineVertex* out, double x, double halfWidth, double top, double bot, const Rgba& color) {
    constexpr float half = 0.5F;  // points
    const auto x0 = static_cast<float>(x - halfWidth);
    const auto x1 = static_cast<float>(x + halfWidth);
    const auto t = static_cast<float>(top);
    const auto b = static_cast<float>(bot);
    const Rgba8 paint = color;
    out = writeSegment(out, x0, t, x1, t, half, paint);
    out = writeSegment(out, x0, b, x1, b, half, paint);
    out = writeSegment(out, x0, b, x0, t, half, paint);
    return writeSegment(out, x1, b, x1, t, half, paint);
}

}  // namespace vmr::CandleGeometry
