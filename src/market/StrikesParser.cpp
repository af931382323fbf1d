#include "market/StrikesParser.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "market/Coerce.h"

namespace vmr::StrikesParser {

namespace {
constexpr std::array<std::pair<std::string_view, double StrikeRow::*>, 8> columns{{{"callGex", &StrikeRow::callGex},
                                                                                   {"putGex", &StrikeRow::putGex},
                                                                                   {"callDex", &StrikeRow::callDex},
                                                                                   {"putDex", &StrikeRow::putDex},
                                                                                   {"callHf", &StrikeRow::callHf},
                                                                                   {"putHf", &StrikeRow::putHf},
                                                                                   {"callOI", &StrikeRow::callOI},
                                                                                   {"putOI", &StrikeRow::putOI}}};

// One pass over the members; of a repeated key the first counts, as everywhere.
std::optional<StrikeRow> rowOf(JsonView object) {
    StrikeRow row;
    std::optional<double> strike;
    unsigned seen = 0;
    for (const auto& [key, value] : object.members()) {
        if (key == "strike") {
            if (!(seen & 1U)) strike = coerce::dbl(value);
            seen |= 1U;
            continue;
        }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (key != columns[i].first) continue;
            const unsigned bit = 2U << i;
            if (!(seen & bit)) row.*columns[i].second = coerce::dbl(value).value_or(0);
            seen |= bit;
            break;
        }
    }
    if (!strike) return std::nullopt;
    row.strike = *strike;
    return row;
}
}  // namespace

std::vector<StrikeRow> parse(const FieldView& fields) {
    const JsonView list = fields["gexByStrike"];
    std::vector<StrikeRow> rows;
    rows.reserve(list.isArray() ? list.size() : 0);
    for (const JsonView item : list.items()) {
        if (!item.isObject()) return {};
        if (const auto row = rowOf(item)) rows.push_back(*row);
    }
    const auto before = [](const StrikeRow& a, const StrikeRow& b) { return strikeBefore(a.strike, b.strike); };
    if (!std::is_sorted(rows.begin(), rows.end(), before)) std::stable_sort(rows.begin(), rows.end(), before);
    return rows;
}

HudMetrics totals(const FieldView& fields) {
    const auto number = [&fields](std::string_view key) { return coerce::dbl(fields[key]).value_or(0); };
    return {number("totalCallOI"), number("totalPutOI"), number("totalCallGex"), number("totalPutGex"),
            number("hfTotal")};
}

}  // namespace vmr::StrikesParser
