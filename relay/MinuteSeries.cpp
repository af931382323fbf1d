#include "relay/MinuteSeries.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "relay/Payloads.h"
#include "relay/RandomStream.h"

namespace vmr::relay {

namespace {
/// What all kinds start from: the minute, its session and where the market stood.
class SourceSeries : public MinuteSeries {
 public:
    SourceSeries(ChainBook& book, const OptionSource& source)
        : book_(book), source_(source), path_(book.market().path(source.instrument())) {}

    std::string value(std::int64_t minute, std::int64_t asOfMs) final {
        const auto prices = path_.minute(minute, asOfMs);
        const MarketSession* session = prices ? book_.market().session(source_.instrument(), minute, asOfMs) : nullptr;
        if (!session) return {};
        return text({*prices, *session, std::min(asOfMs, (minute + 60) * 1000)});
    }

    PricePath& path() final { return path_; }

 protected:
    struct Minute {
        const PriceMinute& prices;
        const MarketSession& session;
        std::int64_t asOfMs;  // no later than the minute's end
        std::int64_t startMs() const { return prices.minute * 1000; }
        /// The price that it began at; a session begins anew, wherever the one before it ended.
        double start() const { return prices.minute == session.start ? prices.first : prices.before; }
    };
    virtual std::string text(const Minute& minute) = 0;

    OptionFlow flow(const Minute& minute, double price, std::int64_t timeMs) const {
        return book_.market().flow(source_, minute.session, price, timeMs);
    }
    const OptionChain& chain(const Minute& minute) { return book_.chain(source_, minute.session); }

    ChainBook& book_;
    const OptionSource& source_;
    PricePath& path_;
};

void appendField(std::string& out, std::string_view key, double value) {
    out += out.empty() ? "{\"" : ",\"";
    out.append(key).append("\":");
    payload::appendNumber(out, value);
}

double rounded(double value, double scale) { return std::round(value * scale) / scale; }

class BubbleSeries final : public SourceSeries {
 public:
    using SourceSeries::SourceSeries;

 private:
    struct Bubble {
        double weight = 0, strike = 0;
        bool positive = false;
    };
    static constexpr std::size_t groups = 3;
    static constexpr double band = 0.02;  // of the price, up and down

    std::string text(const Minute& minute) override {
        const OptionChain& options = chain(minute);
        options.netGamma(minute.prices.last, minute.asOfMs, net_);
        const double spot = minute.prices.last / options.ratio();
        RandomStream random(streamKey(book_.market().seed(), source_.name,
                                      minute.prices.minute));  // the same draw each time this minute is asked for
        std::array<Bubble, groups + 1> best{};
        double most = 0;
        for (std::size_t i = 0; i < net_.size(); ++i) {
            const double strike = options.strikes()[i];
            if (std::abs(strike / spot - 1) > band) continue;
            most = std::max(most, std::abs(net_[i]));
            best.back() = {std::abs(net_[i]) * (0.25 + 0.75 * random.uniform()), strike, net_[i] > 0};
            for (std::size_t at = groups; at > 0 && best[at].weight > best[at - 1].weight; --at)
                std::swap(best[at], best[at - 1]);
        }
        return written(best, most);
    }

    static std::string written(const std::array<Bubble, groups + 1>& best, double most) {
        constexpr std::array<std::array<std::string_view, 3>, groups> keys{
            {{"s", "dom", "pos"}, {"s2", "dom2", "pos2"}, {"s3", "dom3", "pos3"}}};
        std::string out;
        for (std::size_t i = 0; i < groups && best[i].weight > 0; ++i) {
            appendField(out, keys[i][0], best[i].strike);
            appendField(out, keys[i][1], rounded(std::max(best[i].weight / most, 0.05), 1e3));
            out.append(",\"").append(keys[i][2]).append(best[i].positive ? "\":true" : "\":false");
        }
        return (out.empty() ? "{" : out) + "}";
    }

    std::vector<double> net_;
};

class TriangleSeries final : public SourceSeries {
 public:
    using SourceSeries::SourceSeries;

 private:
    static constexpr std::size_t shown = 4;

    std::string text(const Minute& minute) override {
        const OptionChain& options = chain(minute);
        const PriceMinute& prices = minute.prices;
        const double start = minute.start();
        options.netFlow(start, minute.startMs(), flow(minute, start, minute.startMs()), before_);
        options.netFlow(prices.last, minute.asOfMs, flow(minute, prices.last, minute.asOfMs), after_);
        order_.resize(after_.size());
        for (std::size_t i = 0; i < order_.size(); ++i) {
            after_[i] = std::round(after_[i] - before_[i]);
            order_[i] = i;
        }
        const auto larger = [&](std::size_t a, std::size_t b) {
            return std::pair(-std::abs(after_[a]), a) < std::pair(-std::abs(after_[b]), b);
        };
        const auto end = order_.begin() + static_cast<std::ptrdiff_t>(std::min(shown, order_.size()));
        std::partial_sort(order_.begin(), end, order_.end(), larger);
        std::string out = R"({"d":[)";
        for (auto at = order_.begin(); at != end; ++at) {
            out += at == order_.begin() ? "[" : ",[";
            payload::appendNumber(out, options.strikes()[*at]);
            out += ',';
            payload::appendInteger(out, static_cast<std::int64_t>(after_[*at]));
            out += ']';
        }
        return out + "]}";
    }

    std::vector<double> before_, after_;
    std::vector<std::size_t> order_;
};

class FlowSeries final : public SourceSeries {
 public:
    using SourceSeries::SourceSeries;

 private:
    std::string text(const Minute& minute) override {
        const PriceMinute& prices = minute.prices;
        const double open = std::round(flow(minute, minute.start(), minute.startMs()).net());
        double high = open, low = open, close = open;
        for (std::size_t step = 0; step < prices.passed; ++step) {
            const std::int64_t at = minute.startMs() + static_cast<std::int64_t>(step + 1) * PriceMinute::stepMs;
            close = std::round(flow(minute, prices.at[step], at).net());
            high = std::max(high, close);
            low = std::min(low, close);
        }
        std::string out;
        appendField(out, "o", open);
        appendField(out, "h", high);
        appendField(out, "l", low);
        appendField(out, "c", close);
        return out + "}";
    }
};

class OscillatorSeries final : public SourceSeries {
 public:
    using SourceSeries::SourceSeries;

 private:
    static constexpr std::int64_t window = 45 * 60;
    static constexpr double scale = 120;

    std::string text(const Minute& minute) override {
        std::string out;
        append(out, "nq", source_.instrument(), minute);
        append(out, "es", *findInstrument(Family::futures, "ES"), minute);
        append(out, "vix", *findInstrument(Family::indices, "I:VIX"), minute);
        const OptionFlow now = flow(minute, minute.prices.last, minute.asOfMs);
        const double unit = DerivedMarket::flowUnit(source_, minute.session);
        for (const auto& [key, value] : {std::pair("call", now.call), {"put", now.put}, {"net", now.net()}})
            appendField(out, key, rounded(scale * std::tanh(value / unit), 100));
        return out + "}";
    }

    void append(std::string& out, std::string_view key, const Instrument& instrument, const Minute& minute) {
        if (const auto value = momentum(instrument, minute.prices.minute, minute.asOfMs))
            appendField(out, key, rounded(*value, 100));
    }

    /// How far the price has left the mean of the minutes before it, within the session.
    std::optional<double> momentum(const Instrument& instrument, std::int64_t minute, std::int64_t asOfMs) {
        PricePath& prices = book_.market().path(instrument);
        const auto one = prices.minute(minute, asOfMs);
        const MarketSession* session = one ? book_.market().session(instrument, minute, asOfMs) : nullptr;
        if (!session) return std::nullopt;
        const std::int64_t from = std::max(minute - window, session->start);
        double sum = one->last, count = 1;
        const auto known = prices.closed(minute * 1000);
        for (auto at = known.rbegin(); at != known.rend() && at->minute >= from; ++at) {
            sum += at->last;
            ++count;
        }
        const double width = session->open * dailyVolatility(instrument) * 0.16;
        return scale * std::tanh((one->last - sum / count) / width);
    }
};

template <class Series>
std::unique_ptr<MinuteSeries> make(ChainBook& book, const OptionSource& source) {
    return std::make_unique<Series>(book, source);
}
}  // namespace

const MinuteFamily bubbleSeries{"derived:gexBubbles:", "bubbles", "bubble", 600, make<BubbleSeries>};
const MinuteFamily triangleSeries{"derived:hfTriangles:", "triangles", "triangle", 600, make<TriangleSeries>};
const MinuteFamily flowMinutes{"derived:hfHistory:", "candles", "candle", 5000, make<FlowSeries>};
const MinuteFamily oscillatorMinutes{"derived:osc:", "points", "", 14000, make<OscillatorSeries>};

}  // namespace vmr::relay
