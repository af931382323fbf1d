// How long it takes from an input to the picture that shows it.
#pragma once

#include <QElapsedTimer>
#include <cstdint>
#include <optional>

namespace vmr {

class Perf;

/// Times the oldest input that a frame shows, from the event's own time stamp to that frame's swap, as "inputToSwap".
/// Time stamps are the display's: milliseconds of the machine's steady clock on X11 and Wayland. One of another clock
/// counts from when it came here. Does nothing while `perf` is null.
class InputTiming {
 public:
    InputTiming() { origin_.start(); }

    Perf* perf = nullptr;  ///< must outlive the frames

    // Main thread.
    void input(std::uint64_t timestampMs);
    /// A frame was recorded that shows all input so far.
    void recorded();
    /// The recorded frame goes to the render thread; the main thread waits, or is the caller.
    void handedOver();

    /// The frame that was handed over last is on the screen. Render thread.
    void swapped();

 private:
    double nowMs() const;

    QElapsedTimer origin_;
    std::optional<double> oldest_, recorded_, shown_;  // milliseconds
};

}  // namespace vmr
