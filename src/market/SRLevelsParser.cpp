#include "market/SRLevelsParser.h"

#include "base/CheckedInt.h"
#include "base/NumberText.h"
#include "market/Coerce.h"

namespace vmr::SRLevelsParser {

namespace {
std::optional<std::int64_t> truncated(JsonView value) {
    const auto number = coerce::dbl(value);
    if (!number) return std::nullopt;
    return checkedInt(*number, "an integer of the support/resistance levels");
}

void store(const std::optional<SRSession>& session, SRSessions& into) {
    if (session) into.insert_or_assign(session->sessionOpenTs, *session);
}
}  // namespace

std::vector<SRLevel> levels(JsonView value) {
    std::vector<SRLevel> found;
    if (!value.isArray()) return found;
    // a pass of its own: no number of an array that does not count may be read, since reading can be fatal
    for (const JsonView item : value.items())
        if (!item.isObject()) return found;
    found.reserve(value.size());
    for (const JsonView item : value.items()) {
        const auto price = coerce::dbl(item["price"]);
        if (!price) continue;
        found.push_back({truncated(item["i"]).value_or(0), std::string(item["label"].string()), *price,
                         truncated(item["triggerTime"]).value_or(0)});
    }
    return found;
}

std::optional<SRSession> session(JsonView from, std::int64_t fallbackTs) {
    if (!from.isObject()) return std::nullopt;
    const std::int64_t openTs = truncated(from["sessionOpenTs"]).value_or(fallbackTs);
    if (openTs == 0) return std::nullopt;
    return SRSession{openTs, coerce::dbl(from["openPrice"]).value_or(0), levels(from["up"]), levels(from["dn"])};
}

void merge(JsonView payload, SRSessions& into) {
    if (const JsonView sessions = payload["sessions"]; sessions.isObject()) {
        for (const auto& [key, value] : sessions.members()) store(session(value, parseInt(key).value_or(0)), into);
    } else {
        store(session(payload, 0), into);
    }
}

}  // namespace vmr::SRLevelsParser
