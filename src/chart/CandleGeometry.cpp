#include "chart/CandleGeometry.h"

#include <algorithm>

namespace vmr::CandleGeometry {

namespace {

constexpr Rgba white{1.0F, 1.0F, 1.0F, 1.0F};
constexpr Look classicLooks[2] = {{{0.937F, 0.325F, 0.314F, 1.0F}}, {{0.149F, 0.651F, 0.604F, 1.0F}}};
constexpr Look monoLooks[2] = {{white, true}, {white}};

}  // namespace

const Look& look(std::string_view theme, bool up) {
    return (theme == "classic" ? classicLooks : monoLooks)[up ? 1 : 0];
}

CandleVertex* write(CandleVertex* out, const Place& place, const Look& look, const Before& before) {
    const auto halfStroke = [](const Look& of) { return of.outlined ? 0.5F : 0.0F; };  // points
    CandleVertex vertex;
    vertex.body[0] = static_cast<float>(place.top);
    vertex.body[1] = static_cast<float>(place.bot);
    vertex.wick = static_cast<float>(place.halfWick / place.halfBody);
    vertex.halfStroke = halfStroke(look);
    vertex.fill = look.fill;
    vertex.color = look.color;
    Rgba looks{};
    std::size_t at = 0;
    for (const Before::Body& body : {before.one, before.two}) {
        if (body.look == nullptr) break;
        vertex.before[at] = static_cast<float>(body.top);
        vertex.before[at + 1] = static_cast<float>(body.bot);
        looks[at++] = halfStroke(*body.look);
        looks[at++] = body.look->color[3];
    }
    vertex.beforeLooks = looks;
    eachCorner(static_cast<float>(place.x - place.halfBody), static_cast<float>(std::max(place.high, place.top)),
               static_cast<float>(place.x + place.halfBody), static_cast<float>(std::min(place.low, place.bot)),
               [&](float x, float y, float otherX, float otherY) {
                   vertex.corner[0] = x;
                   vertex.corner[1] = y;
                   vertex.opposite[0] = otherX;
                   vertex.opposite[1] = otherY;
                   *out++ = vertex;
               });
    return out;
}

}  // namespace vmr::CandleGeometry
