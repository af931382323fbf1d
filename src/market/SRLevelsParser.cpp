#include "market/SRLevelsParser.h"

#include <utility>

#include "base/NumberText.h"
#include "market/Coerce.h"

namespace vmr::SRLevelsParser {

namespace {
// Nothing where an integer that is there does not fit; `missing` where there is none.
std::optional<std::int64_t> truncated(JsonView value, std::int64_t missing, RepairTally& tally) {
    const auto number = coerce::dbl(value);
    return number ? tally.integer(*number, "an integer of the support/resistance levels") : missing;
}

std::optional<SRLevel> level(JsonView item, RepairTally& tally) {
    const auto price = coerce::dbl(item["price"]);
    if (!price) return std::nullopt;
    const auto i = truncated(item["i"], 0, tally);
    if (!i) return std::nullopt;
    const auto triggerTime = truncated(item["triggerTime"], 0, tally);
    if (!triggerTime) return std::nullopt;
    return SRLevel{*i, std::string(item["label"].string()), *price, *triggerTime};
}

void store(const std::optional<SRSession>& session, SRSessions& into) {
    if (session) into.insert_or_assign(session->sessionOpenTs, *session);
}
}  // namespace

std::vector<SRLevel> levels(JsonView value, RepairTally& tally) {
    std::vector<SRLevel> found;
    if (!value.isArray()) return found;
    // a pass of its own: no number of an array that does not count is read, so none of it is counted as a repair
    for (const JsonView item : value.items())
        if (!item.isObject()) return found;
    found.reserve(value.size());
    for (const JsonView item : value.items())
        if (auto one = level(item, tally)) found.push_back(std::move(*one));
    return found;
}

std::optional<SRSession> session(JsonView from, std::int64_t fallbackTs, RepairTally& tally) {
    if (!from.isObject()) return std::nullopt;
    const std::int64_t openTs = truncated(from["sessionOpenTs"], fallbackTs, tally).value_or(0);
    if (openTs == 0) return std::nullopt;
    return SRSession{openTs, coerce::dbl(from["openPrice"]).value_or(0), levels(from["up"], tally),
                     levels(from["dn"], tally)};
}

void merge(JsonView payload, SRSessions& into, RepairTally& tally) {
    if (const JsonView sessions = payload["sessions"]; sessions.isObject()) {
        for (const auto& [key, value] : sessions.members())
            store(session(value, parseInt(key).value_or(0), tally), into);
    } else {
        store(session(payload, 0, tally), into);
    }
}

}  // namespace vmr::SRLevelsParser
