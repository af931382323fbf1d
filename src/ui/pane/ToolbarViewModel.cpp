#include "ui/pane/ToolbarViewModel.h"

namespace vmr {

void ToolbarViewModel::set(State state) {
    const State old = std::exchange(state_, std::move(state));
    if (old.symbol != state_.symbol) emit symbolChanged();
    if (old.timeframe != state_.timeframe) emit timeframeChanged();
    if (old.expirations != state_.expirations || old.expirationLabels != state_.expirationLabels ||
        old.expiration != state_.expiration || old.expirationText != state_.expirationText)
        emit expirationsChanged();
    if (old.gexSource != state_.gexSource) emit gexSourceChanged();
    if (old.on != state_.on) emit onChanged();
}

void ToolbarViewModel::notifyAll() {
    emit symbolChanged();
    emit timeframeChanged();
    emit expirationsChanged();
    emit gexSourceChanged();
    emit onChanged();
}

void ToolbarViewModel::setTimeframe(int minutes) {
    if (actions_.setTimeframe && minutes != state_.timeframe) actions_.setTimeframe(minutes);
}

// What is shown already may have come by itself, and is to stay from now on.
void ToolbarViewModel::setExpiration(const QString& iso) {
    if (actions_.setExpiration) actions_.setExpiration(iso);
}

void ToolbarViewModel::tellShown(const QVariantMap& shown, const QStringList& folded) {
    if (actions_.tellShown) actions_.tellShown(shown, folded);
}

}  // namespace vmr
