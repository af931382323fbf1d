// Where each channel message goes.
#include <cmath>

#include "market/CandleParser.h"
#include "market/Coerce.h"
#include "market/Roots.h"
#include "market/StrikesParser.h"
#include "model/AppModel.h"
#include "model/PayloadBrief.h"
#include "model/Prepared.h"

namespace vmr {

namespace {
constexpr std::size_t largePayload = 10000;  // entries from which the brief form is worth making beforehand

bool endsWithLive(std::string_view channel) { return channel.ends_with(":trades") || channel.ends_with(":quote"); }

bool carriesBars(std::string_view channel) {
    return channel.starts_with("futures:") || channel.starts_with("stocks:") || channel.starts_with("indices:");
}

// What the relay's queue made of the message. Trades and quotes have nothing, and are spared the comparison of types.
const Prepared* preparedOf(const ChannelMessage& message) {
    return message.prepared.has_value() ? std::any_cast<Prepared>(&message.prepared) : nullptr;
}

// The message's bars; `parsed` holds them if nobody has parsed them yet.
const std::vector<Candle>& barsOf(const ChannelMessage& message, std::vector<Candle>& parsed, RepairTally& tally) {
    if (const auto* prepared = preparedOf(message); prepared && prepared->bars) return *prepared->bars;
    return parsed = CandleParser::parse(message.payload, tally);
}

struct Trade {
    double price;
    double tsMs;
};

std::optional<Trade> readTrade(JsonView payload, const Clock& clock, RepairTally& tally) {
    const auto price = coerce::dbl(payload["price"]);
    if (!price || !std::isfinite(*price)) return std::nullopt;
    const auto ts = coerce::dbl(payload["ts"]);
    if (ts && !tradeMinute(*ts, tally)) return std::nullopt;
    return Trade{*price, ts ? *ts : clock.now() * 1000};
}

bool isObjectOfStrings(JsonView value) {
    if (!value.isObject()) return false;
    for (const auto& [key, member] : value.members())
        if (!member.isString()) return false;
    return true;
}
}  // namespace

std::any AppModel::prepare(const std::string& channel, JsonView payload, bool strict) {
    if (endsWithLive(channel)) return {};
    Prepared prepared;
    if (carriesBars(channel)) {
        RepairTally tally(strict);
        auto bars = CandleParser::parse(payload, tally);
        prepared.repaired = tally.count();
        // the newest that the series could keep of these alone are the newest that it can keep of these and its own
        if (bars.size() > CandleParser::seriesCap) bars = CandleParser::merge({}, bars, CandleParser::seriesCap);
        prepared.bars = std::move(bars);
    }
    if (payload.size() >= largePayload) prepared.brief = briefForm(payload);
    if (payload["gexByStrike"].size() >= largePayload) {
        const DerivedFields none;
        prepared.rows = std::make_shared<std::vector<StrikeRow>>(StrikesParser::parse(FieldView(none, payload)));
    }
    if (!prepared.bars && !prepared.rows && prepared.brief.empty()) return {};
    return prepared;
}

void AppModel::onChannelMessage(const ChannelMessage& message, const std::string& type) {
    if (ended_) return;
    const bool inBatch = type == "batch";
    if (!inBatch || !message.payload.sharesDocument(arrival_.batch)) {
        arrival_.batch = inBatch ? message.payload : Json();
        arrival_.at = at_.clock.now();
        arrival_.minute = LiveBars::minuteOf(arrival_.at);
    }
    if (!bars.reach(arrival_.minute)) rollForwardBar(arrival_.at);
    if (route(message)) return;
    const auto* prepared = preparedOf(message);
    const bool briefIsMade = prepared && !prepared->brief.empty();
    const std::string line =
        message.channel + " [" + type + "] → " + (briefIsMade ? prepared->brief : briefForm(message.payload));
    if (at_.printMessage) at_.printMessage("[app] " + line);
    log.append(line);
}

// To the one place where it belongs, and on to the log unless that says that the message has been dealt with.
bool AppModel::route(const ChannelMessage& message) {
    RepairTally tally(feedRepairs.strict());
    const bool done = routeHot(message, tally) || routeSeries(message, tally) || routeDerived(message, tally);
    const auto* prepared = preparedOf(message);
    feedRepairs.add(message.channel, tally.count() + (prepared ? prepared->repaired : 0));
    return done;
}

TradeEffect AppModel::applyTrade(double price, double tsMs) {
    const TradeEffect effect = bars.applyTrade(price, tsMs);
    if (effect == TradeEffect::none) return effect;
    if (effect == TradeEffect::appended) sessionLevels.rebuildIfBarChanged(bars.candles, sessionHHMM());
    if (surface.gex3DActive()) rebuildSurface(false);
    return effect;
}

void AppModel::applySecondaryTrade(double price, double tsMs) {
    const TradeEffect effect = vmr::applyTrade(bars.secondaryCandles, price, tsMs);
    if (effect == TradeEffect::edited || effect == TradeEffect::appended) overlays.schedule();
}

// Trades, the meta channels and quotes; true when the message has been dealt with.
bool AppModel::routeHot(const ChannelMessage& message, RepairTally& tally) {
    const std::string& channel = message.channel;
    const ChartChannels& names = channels.get();
    if (names.isOpen() && channel == names.tradesName) {
        if (const auto trade = readTrade(message.payload, at_.clock, tally)) {
            // what is too old for the bars is no price of now, and fills nothing either
            if (applyTrade(trade->price, trade->tsMs) != TradeEffect::tooOld) sim_.onTrade(trade->price, arrival_.at);
        }
        return true;
    }
    if (channel == "meta:instruments" && message.payload["catalog"].isObject()) {
        const NoticeGate::Hold hold(gate_);
        if (catalog.applyCatalog(message.payload["catalog"], at_.hfScales)) sim_.updateSpecs(catalog.catFutures);
        openWantedSymbol();
        return true;
    }
    if (channel == "meta:contracts" && isObjectOfStrings(message.payload["map"])) {
        applyContracts(message.payload["map"]);
        return true;
    }
    if (names.isOpen() && channel == names.quoteName) {
        const auto bid = coerce::dbl(message.payload["bid"]);
        const auto ask = coerce::dbl(message.payload["ask"]);
        if (bid && ask && std::isfinite(*bid) && std::isfinite(*ask)) sim_.onQuote(*bid, *ask, arrival_.at);
        return true;
    }
    if (!names.secondaryChannel.empty() && channel == names.secondaryTradesName) {
        if (const auto trade = readTrade(message.payload, at_.clock, tally))
            applySecondaryTrade(trade->price, trade->tsMs);
        return true;
    }
    return false;
}

void AppModel::applyContracts(JsonView map) {
    const NoticeGate::Hold hold(gate_);
    const std::string sym = currentSymbol();
    const auto contract = catalog.applyContracts(map, sym);
    if (contract && !sym.empty() && !isBuiltInStock(sym) && !channels->chartChannel.ends_with(*contract)) {
        log.append("→ contract roll: " + sym + " → " + *contract);
        switchSymbol(sym);
    }
    sim_.contracts(catalog.contractOverrides);
    sim_.contractsKnown();
}

// Bars and the histories beside them. The chart's own bars and the support/resistance sessions go on to the log.
bool AppModel::routeSeries(const ChannelMessage& message, RepairTally& tally) {
    const std::string& channel = message.channel;
    const ChartChannels& names = channels.get();
    if (!names.isOpen()) return false;
    std::vector<Candle> parsed;
    if (!names.secondaryChannel.empty() &&
        (channel == names.secondaryChannel || channel == names.secondaryMinuteName)) {
        if (const auto& incoming = barsOf(message, parsed, tally); !incoming.empty()) {
            LiveBars::merge(bars.secondaryCandles, incoming);
            overlays.schedule();
        }
        return true;
    }
    if (channel == names.vixBaseChannel || channel == names.vixChannel) {
        if (const auto& incoming = barsOf(message, parsed, tally); !incoming.empty()) {
            LiveBars::merge(bars.vixCandles, incoming);
            overlays.raiseSides();
            overlays.schedule();
        }
        return true;
    }
    if (!names.hfHistoryChannel.empty() && channel == names.hfHistoryChannel && message.payload.isObject()) {
        overlays.takeHfHistory(message.payload, tally);
        overlays.schedule();
        return true;
    }
    if (!names.srChannel.empty() && channel == names.srChannel) {
        sessionLevels.take(message.payload, tally);
        overlays.raiseSides();
        sessionLevels.rebuild(bars.candles, sessionHHMM());
        overlays.schedule();
    }
    if (channel == names.chartChannel || channel == names.minuteName) mergeChartBars(message, tally);
    return false;
}

void AppModel::mergeChartBars(const ChannelMessage& message, RepairTally& tally) {
    std::vector<Candle> parsed;
    const auto& incoming = barsOf(message, parsed, tally);
    if (incoming.empty()) return;
    LiveBars::merge(bars.candles, incoming);
    bars.rebuildDisplay();
    sessionLevels.rebuildIfBarChanged(bars.candles, sessionHHMM());
}

// The derived channels. The levels channel goes on to the log.
bool AppModel::routeDerived(const ChannelMessage& message, RepairTally& tally) {
    const std::string& channel = message.channel;
    const ChartChannels& names = channels.get();
    const bool isObject = message.payload.isObject();
    if (isObject && !names.bubblesChannel.empty() && channel == names.bubblesChannel) {
        markers.takeBubbles(message.payload, tally);
        return true;
    }
    if (isObject && !names.trianglesChannel.empty() && channel == names.trianglesChannel) {
        markers.takeTriangles(message.payload, tally);
        return true;
    }
    if (!names.oscChannel.empty() && channel == names.oscChannel) {
        oscillator.take(message.payload);
        return true;
    }
    if (isObject && !names.secondaryGexChannel.empty() && channel == names.secondaryGexChannel) {
        const NoticeGate::Hold hold(gate_);
        options.takeSecondaryGex(message.payload);
        return true;
    }
    if (isObject && !names.levelsChannel.empty() && channel == names.levelsChannel) {
        const NoticeGate::Hold hold(gate_);
        const auto* prepared = preparedOf(message);
        options.takeDerived(message.payload, prepared ? prepared->rows : nullptr, at_.clock.now());
        rebuildSurface(false);
    }
    return false;
}

}  // namespace vmr
