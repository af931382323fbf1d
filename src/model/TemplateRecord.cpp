#include "model/TemplateRecord.h"

#include <cmath>
#include <limits>
#include <utility>

#include "base/Json.h"
#include "base/NumberText.h"
#include "market/Coerce.h"

namespace vmr::TemplateRecord {

namespace {
constexpr const char* viewKey = "_view";
constexpr const char* sourceKey = "gexSource";
constexpr double leavingShare = 0.05;  // of the range

std::string numberText(double value) { return std::isfinite(value) ? doubleText(value) : "null"; }
}  // namespace

JsonMembers capture(const GexConfig& config, const std::optional<ViewSetup>& view) {
    JsonMembers out = jsonMembers(config.toJson()).value_or(JsonMembers());
    if (view)
        out[viewKey] = jsonObject({{"bs", numberText(view->bars)},
                                   {"as", view->autoY ? "true" : "false"},
                                   {"pf", numberText(view->low)},
                                   {"pt", numberText(view->high)}});
    return out;
}

std::optional<GexConfig> config(JsonMembers saved, const std::string& gexSource) {
    saved.erase(viewKey);
    saved[sourceKey] = jsonString(gexSource);
    auto read = GexConfig::fromJson(jsonObject(saved));
    if (read) read->gexSource = gexSource;
    return read;
}

std::optional<ViewSetup> view(const JsonMembers& saved) {
    const auto member = saved.find(viewKey);
    const auto told = member == saved.end() ? std::nullopt : Json::parse(member->second);
    if (!told || !told->isObject()) return std::nullopt;
    const auto numberOf = [&told](const char* key) {
        return coerce::dbl((*told)[key]).value_or(std::numeric_limits<double>::quiet_NaN());
    };
    ViewSetup out{numberOf("bs"), true, numberOf("pf"), numberOf("pt")};
    const JsonView automatic = (*told)["as"];
    const bool manual = automatic.kind() == JsonView::Kind::boolean && !automatic.boolean();
    out.autoY = !(manual && std::isfinite(out.low) && std::isfinite(out.high) && out.low < out.high);
    return out;
}

ViewSetup viewOver(const ViewSetup& view, ViewSetup shown) {
    if (view.bars >= ViewSetup::leastBars && std::isfinite(view.bars)) shown.bars = view.bars;
    shown.autoY = view.autoY;
    if (view.autoY) return shown;
    shown.low = view.low;
    shown.high = view.high;
    return shown;
}

ViewSetup viewNear(ViewSetup view, double close) {
    const double margin = (view.high - view.low) * leavingShare;
    view.autoY = view.autoY || !(view.low - margin < close && close < view.high + margin);
    return view;
}

}  // namespace vmr::TemplateRecord
