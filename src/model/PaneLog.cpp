#include "model/PaneLog.h"

namespace vmr {

void PaneLog::append(const std::string& text) {
    if (text.starts_with("→")) print_("[app] " + text);
    logLines.push_back({ids_.next(), clock_.now(), text});
    while (logLines.size() > maxLogLines) logLines.pop_front();
    logChanged();
}

void PaneLog::clear() {
    logLines.clear();
    logChanged();
}

}  // namespace vmr
