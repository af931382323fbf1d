#include "workspace/PanelPlacing.h"

#include <algorithm>
#include <cmath>

#include "base/Json.h"
#include "base/NumberText.h"

namespace vmr {

namespace {
double clampedExtent(double wanted, double minimum, double area) {
    return std::min(std::max(wanted, minimum), std::max(0.0, area - 2 * panelMargin));
}

double clampedPlace(double wanted, double extent, double area) {
    return std::clamp(wanted, panelMargin, std::max(panelMargin, area - panelMargin - extent));
}

std::optional<double> finite(JsonView value) {
    return value.isNumber() && std::isfinite(value.number()) ? std::optional(value.number()) : std::nullopt;
}
}  // namespace

PanelSize clampedSize(PanelSize size, PanelSize minimum, PanelSize area, double contentHeight) {
    const double height = contentHeight > 0 ? contentHeight + panelTitleHeight : size.height;
    return {clampedExtent(size.width, minimum.width, area.width), clampedExtent(height, minimum.height, area.height)};
}

PanelPos clampedPos(PanelPos pos, PanelSize size, PanelSize area) {
    return {clampedPlace(pos.x, size.width, area.width),
            clampedPlace(pos.y, std::max(size.height, panelReach - panelMargin), area.height)};
}

std::string panelKey(std::string_view id) { return "vmr.panel." + std::string(id); }

StoredPanel parsePanel(std::string_view text) {
    const auto json = Json::parse(text);
    if (!json) return {};
    return {finite((*json)["x"]), finite((*json)["y"]), finite((*json)["w"]), finite((*json)["h"])};
}

std::string panelText(PanelPos pos, PanelSize size) {
    return "{\"x\":" + doubleText(pos.x) + ",\"y\":" + doubleText(pos.y) + ",\"w\":" + doubleText(size.width) +
           ",\"h\":" + doubleText(size.height) + "}";
}

}  // namespace vmr
