#include "ui/pane/PaneViewModel.h"

#include <utility>

namespace vmr {

void PaneViewModel::setFields(Fields fields) {
    if (fields == fields_) return;
    const bool wasEntered = std::exchange(fields_, std::move(fields)).entered;
    emit changed();
    if (wasEntered != fields_.entered) emit enteredChanged();
}

void PaneViewModel::setChart(const Chart& chart) {
    chart_ = chart;
    emit chartChanged();
    if (std::exchange(wasEmpty_, empty()) != wasEmpty_) emit emptyChanged();
}

void PaneViewModel::signIn(const QString& email, const QString& password, bool remember) {
    if (actions_.signIn) actions_.signIn(email, password, remember);
}

void PaneViewModel::signOut() {
    if (actions_.signOut) actions_.signOut();
}

void PaneViewModel::switchSymbol(const QString& symbol) {
    if (actions_.switchSymbol && symbol != fields_.symbol) actions_.switchSymbol(symbol);
}

void PaneViewModel::setTimeframe(int minutes) {
    if (actions_.setTimeframe && minutes != fields_.timeframe) actions_.setTimeframe(minutes);
}

}  // namespace vmr
