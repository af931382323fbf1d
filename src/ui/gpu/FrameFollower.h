// Follows a chart's frames to the screen, and times the input that they show.
#pragma once

#include <QElapsedTimer>
#include <atomic>
#include <cstdint>
#include <vector>

namespace vmr {

class Perf;

/// Tells whether the last frame is on the screen, and times each input, from the event's own time stamp to the swap of
/// the frame that shows it, as "inputToSwap". Time stamps are the display's: milliseconds of the machine's steady clock
/// on X11 and Wayland. One of another clock counts from when it came here.
class FrameFollower {
 public:
    FrameFollower() { origin_.start(); }

    /// Null times nothing. What it was told of before must outlive the frames.
    void setPerf(Perf* perf) { perf_ = perf; }

    // Main thread.
    void input(std::uint64_t timestampMs);
    /// A frame was recorded; it shows all input so far, or none of it was worth showing.
    void recorded(bool showsInput);
    /// The recorded frame goes to the render thread; the main thread waits, or is the caller.
    void handedOver();
    /// A frame was handed over that is not on the screen yet.
    bool onItsWay() const { return shownFrames_ != frames_; }
    /// It will not come to the screen.
    void lost() { shownFrames_ = frames_; }

    /// The frame that was handed over last is on the screen. Render thread.
    void swapped();

 private:
    using Moments = std::vector<double>;  // milliseconds
    static constexpr std::size_t mostInputs = 256;

    double nowMs() const;

    QElapsedTimer origin_;
    std::atomic<Perf*> perf_ = nullptr;
    std::uint64_t frames_ = 0;  // changes while the render thread stands still, or on it
    std::atomic<std::uint64_t> shownFrames_ = 0;
    Moments waiting_, recorded_, shown_;
};

}  // namespace vmr
