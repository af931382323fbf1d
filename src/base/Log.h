// What the program prints: whole lines, one at a time, in which nobody's text can do harm.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <string_view>

namespace vmr {

/// `text` as it can be shown in one line of a terminal. A line feed, carriage return or tab becomes \n, \r or \t, any
/// other control character (C0, DEL, C1) its code as in \x1b, a character that breaks lines or turns the direction of
/// writing its code point as in \u2028, and a byte that is no UTF-8 the replacement character U+FFFD. Everything else
/// stays, backslashes too.
std::string harmlessText(std::string_view text);

/// The way of every line to standard output, or to wherever a test wants them. Any thread; lines never mix.
class Log {
 public:
    /// Gets one whole line, harmless, with its line end; one call at a time, which must not print into the same log.
    using Sink = std::function<void(std::string_view line)>;

    /// Prints to standard output.
    Log() = default;
    explicit Log(Sink sink) : sink_(std::move(sink)) {}

    /// The log that prints to standard output, for what is given none.
    static const Log& standardOutput();

    /// One line, whatever `text` holds.
    void line(std::string_view text) const;

    /// A text of several lines that is the program's own, such as the help: each line feed ends a line.
    void lines(std::string_view text) const;

 private:
    Sink sink_;
    mutable std::mutex mutex_;  // for the sink; standard output has a lock of its own
};

}  // namespace vmr
