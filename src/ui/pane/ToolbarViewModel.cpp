#include "ui/pane/ToolbarViewModel.h"

namespace vmr {

void ToolbarViewModel::set(State state) {
    const State old = std::exchange(state_, std::move(state));
    if (old.futures != state_.futures || old.stocks != state_.stocks) emit choicesChanged();
    if (old.symbol != state_.symbol) emit symbolChanged();
    if (old.timeframe != state_.timeframe) emit timeframeChanged();
}

void ToolbarViewModel::notifyAll() {
    emit choicesChanged();
    emit symbolChanged();
    emit timeframeChanged();
}

void ToolbarViewModel::switchSymbol(const QString& symbol) {
    if (actions_.switchSymbol && symbol != state_.symbol) actions_.switchSymbol(symbol);
}

void ToolbarViewModel::setTimeframe(int minutes) {
    if (actions_.setTimeframe && minutes != state_.timeframe) actions_.setTimeframe(minutes);
}

}  // namespace vmr
