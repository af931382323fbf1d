// The derived fields of the options source: patches, the selected expiration, and what the chart shows of them.
#include <algorithm>
#include <cmath>
#include <utility>

#include "market/Coerce.h"
#include "market/LevelsParser.h"
#include "market/StrikesParser.h"
#include "model/AppModel.h"
#include "model/Expirations.h"
#include "model/Prepared.h"

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

FieldView AppModel::effectiveDerivedFields() const {
    return FieldView::forExpiration(derivedFields, selectedExp->value_or(""));
}

void AppModel::takeDerived(const ChannelMessage& message) {
    patch(derivedFields, message.payload);
    if (message.payload["gexByStrike"].kind() == JsonView::Kind::missing) return;
    // rows that were read on the relay's queue stand for the field that has just come
    const auto* prepared = std::any_cast<Prepared>(&message.prepared);
    readRows_ = prepared ? prepared->rows : nullptr;
}

void AppModel::takeSecondaryGex(const ChannelMessage& message) {
    patch(secondaryGexFields, message.payload);
    const FieldView fields(secondaryGexFields);
    secStrikes = StrikesParser::parse(fields);
    if (const auto ratio = usableRatio(fields["etfRatio"])) secEtfRatio = *ratio;
}

void AppModel::updateExpirations() {
    std::vector<std::string> offered;
    const auto found = derivedFields.find("expirations");
    if (found != derivedFields.end())
        for (const JsonView item : found->second.items())
            if (!item.string().empty()) offered.emplace_back(item.string());
    const std::vector<std::string> list = computeFutureExps(offered, at_.clock.now());
    futureExps = list;
    if (userPickedExp_ && selectedExp.get() && std::find(list.begin(), list.end(), *selectedExp.get()) != list.end())
        return;
    selectedExp = list.empty() ? std::nullopt : std::optional(list.front());
}

void AppModel::reparseDerived() {
    const FieldView fields = effectiveDerivedFields();
    levels = LevelsParser::parse(fields, at_.ids);
    const JsonView rows = fields["gexByStrike"];
    if (!rows.isSame(strikesSource_) || rows.kind() == JsonView::Kind::missing) {
        const auto aggregateRows = derivedFields.find("gexByStrike");
        const bool ofAggregate = aggregateRows != derivedFields.end() && rows.isSame(aggregateRows->second);
        strikes.edit([&](std::vector<StrikeRow>& out) {
            if (ofAggregate && readRows_)
                out = std::move(*std::exchange(readRows_, nullptr));
            else
                out = StrikesParser::parse(fields);
        });
        // the handle keeps the rows' document, so that another message's rows are never taken for these
        strikesSource_ = Json();
        for (const char* field : {"gexByStrike", "byExpiration"})
            if (const auto owner = derivedFields.find(field); owner != derivedFields.end() && owner->second.owns(rows))
                strikesSource_ = owner->second.at(rows);
    }
    if (const auto ratio = usableRatio(fields["etfRatio"])) etfRatio = *ratio;
    gammaFlipStrike = coerce::dbl(fields["gammaFlipStrike"]);
    hud = StrikesParser::totals(fields);
}

void AppModel::setExpiration(const std::string& iso) {
    userPickedExp_ = true;
    if (selectedExp.get() == iso) return;
    selectedExp = iso;
    reparseDerived();
    append("→ exp: " + iso);
}

void AppModel::cycleGexSource() {
    GexConfig changed = config;
    if (changed.gexSource == "INDEX")
        changed.gexSource = "BOTH";
    else
        changed.gexSource = changed.gexSource == "BOTH" ? "ETF" : "INDEX";
    setConfig(changed);
    const std::string sym = currentSymbol();
    if (!sym.empty() && !isBuiltInStock(sym)) switchSymbol(sym);
}

std::string AppModel::symbolSource() const {
    const std::string sym = currentSymbol();
    if (sym.empty() || isBuiltInStock(sym)) return sym;
    const BuiltInFuture* row = builtInFuture(sym);
    const std::string etf(row ? row->etf : std::string_view());
    const auto index = builtInIndexSource(sym);
    if (config->gexSource == "INDEX") return sym + "_" + index.value_or(etf);
    if (config->gexSource == "BOTH") return sym + "_" + etf + index.value_or("");
    return sym + "_" + etf;
}

void AppModel::applyRestore(const PaneState& pane) {
    if (chartChannel->empty()) {
        restorePane_ = pane;
        if (pane.timeframe >= 1 && pane.timeframe <= INT32_MAX) timeframe = static_cast<int>(pane.timeframe);
        return;
    }
    if (!pane.gexSource.empty()) {
        GexConfig changed = config;
        changed.gexSource = pane.gexSource;
        setConfig(changed);
    }
    setTimeframe(pane.timeframe);
    switchSymbol(pane.symbol);
}

}  // namespace vmr
