#include "model/PaneLog.h"

#include "base/Log.h"

namespace vmr {

void PaneLog::append(const std::string& text) {
    if (text.starts_with("→")) print_("[app] " + text);
    logLines.push_back({ids_.next(), clock_.now(), harmlessText(text)});  // it may quote the server
    while (logLines.size() > maxLogLines) logLines.pop_front();
    logChanged();
}

void PaneLog::clear() {
    logLines.clear();
    logChanged();
}

}  // namespace vmr
