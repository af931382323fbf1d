// Any bytes as the stored settings, and as one value set by name.
#include "FuzzEntry.h"
#include "store/GexConfig.h"
#include "store/HexColor.h"

void vmr::fuzz::take(std::string_view text) {
    if (const auto config = GexConfig::fromJson(text)) {
        require(config->initialCandles >= 30 && config->initialCandles <= 1000);
        require(config->simBalance >= 1000 && config->simCommission >= 0 && config->simCommission <= 50);
        require(config->oscHeight >= 100 && config->oscHeight <= 400);
        require(GexConfig::fromJson(config->toJson()) == config);
    }
    GexConfig config;
    const auto equals = text.find('=');
    if (equals != std::string_view::npos && config.set(text.substr(0, equals), text.substr(equals + 1)))
        require(config == GexConfig());
    const Rgb color = HexColor::rgb(text);
    require(color.r >= 0 && color.r <= 1 && HexColor::rgb(HexColor::hex(color)) == color);
}
