#include "market/Coerce.h"

#include "base/NumberText.h"

namespace vmr::coerce {

std::optional<double> dbl(JsonView value) {
    if (value.isNumber()) return value.number();
    if (value.isString()) return parseDouble(value.string());
    if (value.kind() == JsonView::Kind::boolean) return value.boolean() ? 1.0 : 0.0;
    return std::nullopt;
}

std::optional<std::int64_t> intv(JsonView value, RepairTally& tally) {
    switch (value.kind()) {
        case JsonView::Kind::integer:
            return value.integer();
        case JsonView::Kind::unsignedInteger:
        case JsonView::Kind::floating:
            return tally.integer(value.number(), "an integer of the feed");
        case JsonView::Kind::boolean:
            return value.boolean() ? 1 : 0;
        case JsonView::Kind::string:
            return parseInt(value.string());
        default:
            return std::nullopt;
    }
}

std::int64_t intVal(JsonView value, RepairTally& tally) { return intv(value, tally).value_or(0); }

std::optional<std::int64_t> minuteInt(JsonView value, RepairTally& tally) {
    const auto number = dbl(value);
    if (!number) return std::nullopt;
    return tally.integer(*number, "a minute of the feed");
}

bool boolean(JsonView value) {
    if (value.kind() == JsonView::Kind::boolean) return value.boolean();
    const auto number = dbl(value);
    return number && *number != 0;
}

}  // namespace vmr::coerce
