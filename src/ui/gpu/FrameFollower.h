// Follows a plot's frames to the screen, and times the input that they show.
#pragma once

#include <QElapsedTimer>
#include <atomic>
#include <cstdint>
#include <vector>

namespace vmr {

class Perf;

/// Knows which frame is on the screen, and times each input, from the event's own time stamp to the swap of the frame
/// that shows it, as "inputToSwap". Time stamps are the display's: milliseconds of the machine's steady clock on X11
/// and Wayland. One of another clock counts from when it came here.
///
/// Three moments, and who calls when. Main thread: `input` and `recorded`, while the render thread draws. Sync:
/// `handedOver`, on the render thread while the main thread waits for it, or on the main thread where there is no
/// other. Render thread: `swapped`. Only `shownFrame` and the probe are touched by both at a time, and are atomic; the
/// lists change hands in the sync.
class FrameFollower {
 public:
    FrameFollower() { origin_.start(); }

    /// Null times nothing. What it was told of before must outlive the frames. Main thread.
    void setPerf(Perf* perf) { perf_ = perf; }

    void input(std::uint64_t timestampMs);
    /// A frame was recorded; it shows all input so far, or none of it was worth showing.
    void recorded(bool showsInput);
    /// The recorded frame, of this number, goes to the render thread.
    void handedOver(std::uint64_t frame);
    /// The frame that was handed over last is on the screen.
    void swapped();
    /// The number of the frame on the screen; 0 before the first. Any thread.
    std::uint64_t shownFrame() const { return shownFrame_; }

 private:
    using Moments = std::vector<double>;  // milliseconds
    static constexpr std::size_t mostInputs = 256;

    double nowMs() const;

    QElapsedTimer origin_;
    std::atomic<Perf*> perf_ = nullptr;
    std::atomic<std::uint64_t> shownFrame_ = 0;
    Moments waiting_, recorded_;  // main thread, and in the sync
    std::uint64_t frame_ = 0;     // render thread, and in the sync
    Moments shown_;
};

}  // namespace vmr
