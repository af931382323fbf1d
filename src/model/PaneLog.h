// The log of a pane.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

#include "base/Clock.h"
#include "base/Signal.h"
#include "base/Uuid.h"

namespace vmr {

/// One line of the pane's log; `time` is market time in seconds.
struct LogLine {
    Uuid id;
    double time = 0;
    std::string text;
};

/// Main thread.
class PaneLog {
 public:
    static constexpr std::size_t maxLogLines = 500;
    using Print = std::function<void(const std::string& line)>;

    /// What it is given must outlive it. `print` gets lines that begin with an arrow as well.
    PaneLog(const Clock& clock, UuidSource& ids, Print print, NoticeGate* gate = nullptr)
        : logChanged(gate), clock_(clock), ids_(ids), print_(std::move(print)) {}

    std::deque<LogLine> logLines;  ///< oldest first, at most `maxLogLines`
    Signal<> logChanged;

    void append(const std::string& text);
    void clear();

 private:
    const Clock& clock_;
    UuidSource& ids_;
    Print print_;
};

}  // namespace vmr
