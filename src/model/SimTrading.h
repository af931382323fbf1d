// The paper account as a chart reaches it.
#pragma once

#include "chart/ChartTrading.h"
#include "sim/SimEngine.h"

namespace vmr {

/// Passes on to the engine, which must outlive it. Main thread.
class SimTrading final : public ChartTrading {
 public:
    explicit SimTrading(SimEngine& engine) : engine_(engine) {}

    void lines(const std::string& root, TradingLines& out) const override;
    std::size_t workingCount(const std::string& root) const override;
    std::optional<double> last(const std::string& root) const override;
    std::int64_t ticketQty() const override { return engine_.ticketQty; }
    double roundTick(const std::string& root, double price) const override { return engine_.roundTick(root, price); }

    /// With the ticket's quantity and bracket.
    void place(const std::string& root, std::string_view side, std::string_view type, double price) override;
    void cancel(const Uuid& id) override { engine_.cancel(id); }
    void cancelAll(const std::string& root) override { engine_.cancelAll(root); }
    void modify(const Uuid& id, double price) override { engine_.modify(id, price); }
    void modifyProjectedLeg(const Uuid& id, std::string_view leg, double price) override {
        engine_.modifyProjectedLeg(id, leg, price);
    }
    void setProtective(const std::string& root, std::string_view kind, double price) override {
        engine_.setProtective(root, kind, price);
    }
    void flatten(const std::string& root) override { engine_.flatten(root); }

 private:
    SimEngine& engine_;
};

}  // namespace vmr
