// A paper account that always has the same lines, for a chart to show.
#pragma once

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "chart/ChartTrading.h"

namespace vmr::test {

/// A position, two orders and the legs of one of them, around `middle`. What is asked of it has no effect but a word
/// in `asked`.
class StillAccount final : public ChartTrading {
 public:
    explicit StillAccount(double middle) : last_(middle) {
        lines_.position = PositionLine{2, middle - 3};
        lines_.orders = {{id(1), middle - 8, true, 1, "LMT"}, {id(2), middle + 9, false, 2, "TP"}};
        lines_.legs = {{id(1), "SL", middle - 14}, {id(1), "TP", middle + 5}};
    }
    void lines(const std::string&, TradingLines& out) const override { out = lines_; }
    std::size_t workingCount(const std::string&) const override { return lines_.orders.size(); }
    std::optional<double> last(const std::string&) const override { return last_; }
    std::int64_t ticketQty() const override { return 1; }
    double roundTick(const std::string&, double price) const override { return std::round(price * 4) / 4; }
    void place(const std::string&, std::string_view, std::string_view, double) override { asked.push_back("place"); }
    void cancel(const Uuid&) override {}
    void cancelAll(const std::string&) override {}
    void modify(const Uuid&, double) override {}
    void modifyProjectedLeg(const Uuid&, std::string_view, double) override {}
    void setProtective(const std::string&, std::string_view, double) override { asked.push_back("protect"); }
    void flatten(const std::string&) override {}

    std::vector<std::string> asked;

 private:
    static Uuid id(std::uint8_t n) { return Uuid{{n}}; }

    TradingLines lines_;
    double last_;
};

}  // namespace vmr::test
