// Notices over a chart.
#pragma once

#include <optional>
#include <string>

#include "base/Signal.h"
#include "model/PaneWork.h"

namespace vmr {

/// A short notice over the chart.
struct ToastMsg {
    std::string title;
    std::optional<std::string> detail;
    bool operator==(const ToastMsg&) const = default;
};

/// Main thread.
class Notices {
 public:
    /// `work` must outlive it; `gate` may be null.
    explicit Notices(PaneWork& work, NoticeGate* gate = nullptr)
        : toast(gate), marketClosedNotice(gate, false), accountProblem(gate), work_(work) {}

    Observable<std::optional<ToastMsg>> toast;
    Observable<bool> marketClosedNotice;
    Observable<std::optional<std::string>> accountProblem;  ///< of the paper account, for as long as it lasts

    /// For 2.5 seconds, or until the next one.
    void flashToast(const std::string& title, std::optional<std::string> detail = std::nullopt);
    /// For 4 seconds.
    void flashMarketClosedNotice();

 private:
    PaneWork& work_;
    int toastGen_ = 0, marketClosedGen_ = 0;
};

}  // namespace vmr
