#include "market/OscParser.h"

#include <array>
#include <string_view>

#include "base/NumberText.h"
#include "market/Coerce.h"

namespace vmr::OscParser {

namespace {
struct Line {
    std::string_view name;
    std::optional<double> OscMinute::*value;
    std::vector<OscPt> OscLines::*points;
};
constexpr std::array<Line, 6> lines{{{"nq", &OscMinute::nq, &OscLines::nq},
                                     {"es", &OscMinute::es, &OscLines::es},
                                     {"vix", &OscMinute::vix, &OscLines::vix},
                                     {"call", &OscMinute::call, &OscLines::call},
                                     {"put", &OscMinute::put, &OscLines::put},
                                     {"net", &OscMinute::net, &OscLines::net}}};
constexpr std::int64_t newestInSeconds = 1'000'000'000'000;  // anything above is in milliseconds
}  // namespace

void merge(JsonView payload, OscByMin& into) {
    const JsonView points = payload["points"];
    if (!points.isObject()) return;
    for (const auto& [key, value] : points.members()) {
        const auto given = parseInt(key);
        if (!given || !value.isObject()) continue;
        OscMinute& minute = into[*given > newestInSeconds ? *given / 1000 : *given];
        for (const Line& line : lines)
            if (const auto number = coerce::dbl(value[line.name])) minute.*line.value = number;
    }
}

void build(const OscByMin& byMin, OscLines& out) {
    for (const Line& line : lines) {
        (out.*line.points).clear();
        (out.*line.points).reserve(byMin.size());
    }
    for (const auto& [t, minute] : byMin)
        for (const Line& line : lines)
            if (const auto& value = minute.*line.value) (out.*line.points).push_back({t, *value});
}

}  // namespace vmr::OscParser
