// Where each channel message goes.
#include <cmath>

#include "market/CandleParser.h"
#include "market/Coerce.h"
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

// The message's bars; `parsed` holds them if nobody has parsed them yet.
const std::vector<Candle>& barsOf(const ChannelMessage& message, std::vector<Candle>& parsed) {
    if (const auto* prepared = std::any_cast<Prepared>(&message.prepared); prepared && prepared->bars)
        return *prepared->bars;
    return parsed = CandleParser::parse(message.payload);
}

void mergeInto(std::vector<Candle>& series, const std::vector<Candle>& bars) {
    series = CandleParser::merge(series, bars, CandleParser::seriesCap);
}

struct Trade {
    double price;
    double tsMs;
};

std::optional<Trade> readTrade(JsonView payload, const Clock& clock) {
    const auto price = coerce::dbl(payload["price"]);
    if (!price || !std::isfinite(*price)) return std::nullopt;
    const auto ts = coerce::dbl(payload["ts"]);
    return Trade{*price, ts ? *ts : clock.now() * 1000};
}

bool isObjectOfStrings(JsonView value) {
    if (!value.isObject()) return false;
    for (const auto& [key, member] : value.members())
        if (!member.isString()) return false;
    return true;
}
}  // namespace

std::any AppModel::prepare(const std::string& channel, JsonView payload) {
    if (endsWithLive(channel)) return {};
    Prepared prepared;
    if (carriesBars(channel)) {
        auto bars = CandleParser::parse(payload);
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
    if (type != "batch") {
        rollForwardBarIfNeeded();
    } else {
        if (!message.payload.sharesDocument(batch_)) {
            batch_ = message.payload;
            batchNow_ = at_.clock.now();
        }
        rollForwardBar(batchNow_);
    }
    if (routeHot(message) || routeSeries(message) || routeDerived(message)) return;
    const auto* prepared = std::any_cast<Prepared>(&message.prepared);
    const bool briefIsMade = prepared && !prepared->brief.empty();
    const std::string line =
        message.channel + " [" + type + "] → " + (briefIsMade ? prepared->brief : briefForm(message.payload));
    if (at_.printMessage) at_.printMessage("[app] " + line);
    append(line);
}

// Trades, the meta channels and quotes; true when the message has been dealt with.
bool AppModel::routeHot(const ChannelMessage& message) {
    const std::string& channel = message.channel;
    if (!chartChannel->empty() && channel == tradesName_) {
        if (const auto trade = readTrade(message.payload, at_.clock)) {
            applyTrade(trade->price, trade->tsMs);
            if (!simRoot.empty()) simOnTrade(trade->price);
        }
        return true;
    }
    if (channel == "meta:instruments" && message.payload["catalog"].isObject()) {
        applyCatalog(message.payload["catalog"]);
        return true;
    }
    if (channel == "meta:contracts" && isObjectOfStrings(message.payload["map"])) {
        applyContracts(message.payload["map"]);
        return true;
    }
    if (!chartChannel->empty() && channel == quoteName_) {
        const auto bid = coerce::dbl(message.payload["bid"]);
        const auto ask = coerce::dbl(message.payload["ask"]);
        if (!simRoot.empty() && bid && ask && std::isfinite(*bid) && std::isfinite(*ask)) simOnQuote(*bid, *ask);
        return true;
    }
    if (!secondaryChannel.empty() && channel == secondaryTradesName_) {
        if (const auto trade = readTrade(message.payload, at_.clock)) applySecondaryTrade(trade->price, trade->tsMs);
        return true;
    }
    return false;
}

// Bars and the histories beside them. The chart's own bars and the support/resistance sessions go on to the log.
bool AppModel::routeSeries(const ChannelMessage& message) {
    const std::string& channel = message.channel;
    std::vector<Candle> parsed;
    if (!secondaryChannel.empty() && (channel == secondaryChannel || channel == secondaryMinuteName_)) {
        if (const auto& bars = barsOf(message, parsed); !bars.empty()) {
            mergeInto(secondaryCandles, bars);
            scheduleOverlays();
        }
        return true;
    }
    if (channel == vixBaseChannel() || channel == vixChannel()) {
        if (const auto& bars = barsOf(message, parsed); !bars.empty()) {
            mergeInto(vixCandles, bars);
            ++sideRevision_;
            scheduleOverlays();
        }
        return true;
    }
    if (!hfHistoryChannel.empty() && channel == hfHistoryChannel && message.payload.isObject()) {
        takeHfHistory(message.payload);
        return true;
    }
    if (!srChannel.empty() && channel == srChannel) takeSupportResistance(message.payload);
    if (!chartChannel->empty() && (channel == chartChannel.get() || channel == minuteName_)) mergeChartBars(message);
    return false;
}

void AppModel::mergeChartBars(const ChannelMessage& message) {
    std::vector<Candle> parsed;
    const auto& bars = barsOf(message, parsed);
    if (bars.empty()) return;
    mergeInto(candles, bars);
    rebuildDisplay();
    rebuildSRLinesIfBarChanged();
}

// The derived channels. The levels channel goes on to the log.
bool AppModel::routeDerived(const ChannelMessage& message) {
    const std::string& channel = message.channel;
    const bool isObject = message.payload.isObject();
    if (isObject && !bubblesChannel.empty() && channel == bubblesChannel) {
        takeBubbles(message.payload);
        return true;
    }
    if (isObject && !trianglesChannel.empty() && channel == trianglesChannel) {
        takeTriangles(message.payload);
        return true;
    }
    if (!oscChannel.empty() && channel == oscChannel) {
        takeOscillator(message.payload);
        scheduleOscRebuild();
        return true;
    }
    if (isObject && !secondaryGexChannel.empty() && channel == secondaryGexChannel) {
        takeSecondaryGex(message);
        return true;
    }
    if (isObject && !levelsChannel->empty() && channel == levelsChannel.get()) {
        takeDerived(message);
        updateExpirations();
        reparseDerived();
        rebuild3D(false);
    }
    return false;
}

}  // namespace vmr
