#include "model/OptionsData.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "market/Coerce.h"
#include "market/LevelsParser.h"
#include "market/StrikesParser.h"
#include "model/Expirations.h"

namespace vmr {

namespace {
constexpr std::size_t largeDocument = 64 * 1024;  // bytes

// A member to keep of a message. A small one gets a document of its own, so that it does not keep a large one alive.
Json toKeep(const Json& payload, JsonView value) {
    constexpr std::size_t shortList = 100;
    bool small = !value.isObject() && value.size() <= shortList;
    for (const JsonView item : small ? value.items() : JsonView::ItemRange{})
        small = small && !item.isObject() && !item.isArray();
    const Json kept = payload.at(value);
    return small && payload.documentBytes() > largeDocument ? kept.detached() : kept;
}

void patch(DerivedFields& fields, const Json& payload) {
    for (const auto& [key, value] : payload.members())
        fields.insert_or_assign(std::string(key), toKeep(payload, value));
}

std::optional<double> usableRatio(JsonView value) {
    const auto ratio = coerce::dbl(value);
    return ratio && std::isfinite(*ratio) && *ratio != 0 ? ratio : std::nullopt;
}
}  // namespace

OptionsData::OptionsData(UuidSource& ids, NoticeGate* gate)
    : OptionsOfChart(gate),
      strikes(gate),
      etfRatio(gate, 1.0),
      secEtfRatio(gate, 1.0),
      gammaFlipStrike(gate),
      hud(gate),
      selectedExp(gate),
      futureExps(gate),
      ids_(ids) {}

FieldView OptionsData::effectiveDerivedFields() const {
    return FieldView::forExpiration(derivedFields, selectedExp->value_or(""));
}

void OptionsData::takeDerived(const Json& payload, std::shared_ptr<std::vector<StrikeRow>> rows, double now) {
    patch(derivedFields, payload);
    // rows that were read on the relay's queue stand for the field that has just come
    if (payload["gexByStrike"].kind() != JsonView::Kind::missing) readRows = std::move(rows);
    updateExpirations(now);
    reparse();
}

void OptionsData::takeSecondaryGex(const Json& payload) {
    patch(secondaryGexFields, payload);
    const FieldView fields(secondaryGexFields);
    secStrikes = StrikesParser::parse(fields);
    if (const auto ratio = usableRatio(fields["etfRatio"])) secEtfRatio = *ratio;
}

void OptionsData::updateExpirations(double now) {
    std::vector<std::string> offered;
    const auto found = derivedFields.find("expirations");
    if (found != derivedFields.end())
        for (const JsonView item : found->second.items())
            if (!item.string().empty()) offered.emplace_back(item.string());
    const std::vector<std::string> list = computeFutureExps(offered, now);
    futureExps = list;
    if (userPickedAll_) return;
    if (userPickedExp_ && selectedExp.get() && std::find(list.begin(), list.end(), *selectedExp.get()) != list.end())
        return;
    selectedExp = list.empty() ? std::nullopt : std::optional(list.front());
}

void OptionsData::reparse() {
    const FieldView fields = effectiveDerivedFields();
    levels = LevelsParser::parse(fields, ids_);
    const JsonView rows = fields["gexByStrike"];
    if (!rows.isSame(strikesSource) || rows.kind() == JsonView::Kind::missing) {
        const auto aggregateRows = derivedFields.find("gexByStrike");
        const bool ofAggregate = aggregateRows != derivedFields.end() && rows.isSame(aggregateRows->second);
        strikes.edit([&](std::vector<StrikeRow>& out) {
            if (ofAggregate && readRows)
                out = std::move(*std::exchange(readRows, nullptr));
            else
                out = StrikesParser::parse(fields);
        });
        // the handle keeps the rows' document, so that another message's rows are never taken for these
        strikesSource = Json();
        for (const char* field : {"gexByStrike", "byExpiration"})
            if (const auto owner = derivedFields.find(field); owner != derivedFields.end() && owner->second.owns(rows))
                strikesSource = owner->second.at(rows);
    }
    if (const auto ratio = usableRatio(fields["etfRatio"])) etfRatio = *ratio;
    gammaFlipStrike = coerce::dbl(fields["gammaFlipStrike"]);
    hud = StrikesParser::totals(fields);
}

bool OptionsData::setExpiration(const std::string& iso) {
    userPickedExp_ = true;
    userPickedAll_ = iso.empty();
    const auto picked = iso.empty() ? std::nullopt : std::optional(iso);
    if (selectedExp.get() == picked) return false;
    selectedExp = picked;
    reparse();
    return true;
}

}  // namespace vmr
