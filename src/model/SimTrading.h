// The paper account as a chart reaches it.
#pragma once

#include <functional>
#include <utility>

#include "chart/ChartTrading.h"
#include "sim/SimEngine.h"

namespace vmr {

/// Passes on to the engine, which must outlive it. Main thread.
class SimTrading final : public ChartTrading {
 public:
    /// `refused`, which may be empty, gets the reason when something that a person asked for is not done.
    explicit SimTrading(SimEngine& engine, std::function<void(const std::string& reason)> refused = {})
        : engine_(engine), refused_(std::move(refused)) {}

    void lines(const std::string& root, TradingLines& out) const override;
    double unrealized(const std::string& root) const override;
    std::size_t workingCount(const std::string& root) const override;
    std::optional<double> last(const std::string& root) const override;
    std::int64_t ticketQty() const override { return engine_.ticketQty; }
    std::optional<double> stalePrice(const std::string& root) const override { return engine_.stalePrice(root); }
    double roundTick(const std::string& root, double price) const override { return engine_.roundTick(root, price); }

    bool changeable() const override { return !engine_.heldElsewhere(); }
    /// Not while another process has the account; nothing below then does anything but tell so.
    bool mayChange() const override;
    /// With the ticket's quantity and bracket.
    void place(const std::string& root, std::string_view side, std::string_view type, double price) override;
    void cancel(const Uuid& id) override {
        if (mayChange()) engine_.cancel(id);
    }
    void cancelAll(const std::string& root) override {
        if (mayChange()) engine_.cancelAll(root);
    }
    void modify(const Uuid& id, double price) override {
        if (mayChange()) engine_.modify(id, price);
    }
    void modifyProjectedLeg(const Uuid& id, std::string_view leg, double price) override {
        if (mayChange()) engine_.modifyProjectedLeg(id, leg, price);
    }
    void putBack(const Uuid& id, std::string_view leg, double price) override {
        if (mayChange()) engine_.putBack(id, leg, price);
    }
    void setProtective(const std::string& root, std::string_view kind, double price) override;
    void flatten(const std::string& root) override;

 private:
    std::string otherContract(const std::string& root) const;
    void tell(const std::optional<std::string>& problem) const;

    SimEngine& engine_;
    const std::function<void(const std::string& reason)> refused_;
};

}  // namespace vmr
