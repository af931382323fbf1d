#include "model/Notices.h"

#include <utility>

namespace vmr {

void Notices::flashToast(const std::string& title, std::optional<std::string> detail) {
    toast = ToastMsg{title, std::move(detail)};
    work_.after(2.5, [this, generation = ++toastGen_] {
        if (toastGen_ == generation) toast = std::nullopt;
    });
}

void Notices::flashMarketClosedNotice() {
    marketClosedNotice = true;
    work_.after(4.0, [this, generation = ++marketClosedGen_] {
        if (marketClosedGen_ == generation) marketClosedNotice = false;
    });
}

}  // namespace vmr
