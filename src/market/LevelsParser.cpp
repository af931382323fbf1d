#include "market/LevelsParser.h"

#include <array>
#include <charconv>
#include <cmath>

#include "base/NumberText.h"
#include "market/Coerce.h"

namespace vmr::LevelsParser {

namespace {
std::string strikeText(double strike) {
    if (strike != std::trunc(strike)) return doubleText(strike);
    std::array<char, 400> digits{};  // the largest double has 309
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), strike, std::chars_format::fixed, 0).ptr;
    return std::string(digits.data(), end);
}

double ratioOf(const FieldView& fields) {
    if (const auto ratio = coerce::dbl(fields["etfRatio"])) return *ratio;
    return coerce::dbl(fields["indexEtfRatio"]).value_or(1.0);
}
}  // namespace

std::vector<PriceLevel> parse(const FieldView& fields, UuidSource& ids) {
    constexpr double gray = 0.667;
    const double ratio = ratioOf(fields);
    std::vector<PriceLevel> levels;
    if (!(ratio > 0)) return levels;
    for (const auto& [key, name] :
         {std::pair{"callWallStrike", "Call Wall "}, std::pair{"putWallStrike", "Put Wall "}}) {
        const auto strike = coerce::dbl(fields[key]);
        if (!strike || !(*strike > 0) || !std::isfinite(*strike * ratio)) continue;
        levels.push_back({ids.next(), name + strikeText(*strike), *strike * ratio, gray, gray, gray});
    }
    return levels;
}

}  // namespace vmr::LevelsParser
