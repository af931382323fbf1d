// A paper account that shows what a test gives it and notes what is asked of it.
#pragma once

#include <cmath>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "chart/ChartTrading.h"

namespace vmr::test {

struct PlayedTrading : ChartTrading {
    TradingLines shown;
    std::optional<double> lastPrice = 21000.0;
    std::optional<double> staleAge;
    double tick = 0.25;
    double openResult = 0;
    bool readOnly = false;
    mutable int reads = 0;  ///< of the result
    std::vector<std::string> done;

    template <class... Parts>
    void note(const char* what, const Parts&... parts) {
        std::ostringstream text(what, std::ios::ate);
        ((text << ' ' << parts), ...);
        done.push_back(text.str());
    }
    static int number(const Uuid& id) { return id.bytes[0]; }
    void lines(const std::string&, TradingLines& out) const override {
        out = shown;
        out.tick = tick;
    }
    double unrealized(const std::string&) const override { return ++reads, openResult; }
    std::size_t workingCount(const std::string&) const override { return shown.orders.size(); }
    std::optional<double> last(const std::string&) const override { return lastPrice; }
    std::optional<double> stalePrice(const std::string&) const override { return staleAge; }
    std::int64_t ticketQty() const override { return 2; }
    double roundTick(const std::string&, double price) const override { return std::round(price / tick) * tick; }
    bool changeable() const override { return !readOnly; }
    void place(const std::string& root, std::string_view side, std::string_view type, double price) override {
        note("place", root, side, type, price);
    }
    void cancel(const Uuid& id) override { note("cancel", number(id)); }
    void cancelAll(const std::string& root) override { note("cancelAll", root); }
    void modify(const Uuid& id, double price) override { note("modify", number(id), price); }
    void modifyProjectedLeg(const Uuid& id, std::string_view leg, double price) override {
        note("leg", number(id), leg, price);
    }
    void putBack(const Uuid& id, std::string_view leg, double price) override { note("back", number(id), leg, price); }
    void setProtective(const std::string&, std::string_view kind, double price) override {
        note("protect", kind, price);
    }
    void flatten(const std::string& root) override { note("flatten", root); }
};

}  // namespace vmr::test
