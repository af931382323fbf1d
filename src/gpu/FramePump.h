// When a plot that is drawn on demand asks for, records and hands over a frame.
#pragma once

#include <cstdint>

namespace vmr {

/// The pacing of one plot's frames, without a toolkit: each operation is an event, and its answer says what the host
/// has to do next. The rule is that the next frame is recorded when the last one is on the screen, so that one frame is
/// under way at a time and shows the newest input.
///
/// idle → asked → recorded → on its way → (on the screen) idle.
///
/// Main thread; `handOver` and `lost` also on the render thread while the main thread is blocked.
class FramePump {
 public:
    /// Seconds that a frame on its way may hold up the next one. A window out of sight shows nothing, and some
    /// platforms do not say that it is out of sight.
    static constexpr double longestWait = 0.1;

    enum class State : unsigned char {
        idle,      ///< the screen shows what there is to show
        asked,     ///< the host was told to make a frame
        recorded,  ///< a frame is recorded, and the render thread does not have it yet
        onItsWay,  ///< the render thread has it, and it is not on the screen yet
    };
    enum class Order : unsigned char {
        nothing,
        schedule,  ///< let the toolkit make a frame
        watch,     ///< call `late` after `longestWait`, unless an order to schedule comes first
    };

    State state() const { return state_; }
    /// The frame that was handed over last, counted from 1; 0 before the first.
    std::uint64_t frame() const { return frame_; }

    /// What the plot shows has changed. An ask from within a recording is covered by that recording.
    Order ask();
    /// On: each frame that comes to the screen asks for the next one, as easing frames do (`recorded`).
    Order setLive(bool on);

    /// The toolkit makes its frame; the host records now.
    void beginRecord() { recording_ = true; }
    /// A frame was recorded. `again`: something still moves, so the next frame is asked for when this one is shown.
    void recorded(bool again);
    /// There was nothing to record into, such as a plot without a size. What was asked for is dropped.
    void notRecorded();
    /// The toolkit takes what there is to draw. True when that is a new frame, and false for a repaint of the last one.
    bool handOver();

    /// Frame number `shownFrame` is on the screen. Older ones are passed over: their swap may be heard of late.
    Order shown(std::uint64_t shownFrame);
    /// `longestWait` has passed since an order to watch: the frame on its way holds up the next one no longer.
    Order late();
    /// The GPU side of the plot was made anew and holds no frame.
    Order lost() { return askNow(); }
    /// The plot's next frame must be the very one that the window is making: the atlas that both draw from moved its
    /// glyphs, or the plot follows another one that is being recorded. Does not wait for the frame before.
    Order join() { return askNow(); }
    /// The window or the plot is not on the screen any more. What is wanted then stays asked for.
    Order hidden() { return neverShown(); }
    /// The window or the plot is on the screen again, or has another size or pixel ratio.
    Order visible() { return ask(); }
    Order resized() { return ask(); }
    /// The window drew its frame into a picture instead of onto the screen.
    Order pictureTaken() { return neverShown(); }

 private:
    Order askNow();
    Order finish();
    Order neverShown();

    State state_ = State::idle;
    bool recording_ = false;
    bool wanted_ = false;  ///< an ask came while a frame was on its way
    bool again_ = false;
    bool live_ = false;
    std::uint64_t frame_ = 0;
};

}  // namespace vmr
