// A plot that is drawn on the GPU, as a Qt Quick item: the base of the chart and of every other plot.
#pragma once

#include <QBasicTimer>
#include <QQuickItem>
#include <QString>
#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>

#include "base/Clock.h"
#include "gpu/CalmPace.h"
#include "gpu/FramePump.h"
#include "gpu/FrameRecorder.h"
#include "gpu/ScreenPace.h"
#include "ui/gpu/FrameFollower.h"
#include "ui/gpu/SharedGlyphs.h"

namespace vmr {

class Perf;
class WindowFrames;

/// Draws on demand: after `requestFrame`, and as long as `record` says that something moves. A frame is recorded on the
/// main thread while the window polishes its items, and shown through a render node; `FramePump` paces it. Main thread
/// but where noted.
///
/// `onBareWindow` says that nothing lies between the plot and the window's own colour, so that a plot of the same
/// colour need not paint it again.
///
/// A subclass records, and asks for a frame when what it shows has changed; the rest is done here, a hidden window, a
/// lost graphics device and another size included.
class FrameItem : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)
    Q_PROPERTY(bool onBareWindow MEMBER onBareWindow_)

 public:
    explicit FrameItem(QQuickItem* parent = nullptr);
    ~FrameItem() override;

    /// What the plot shows has changed. May be called as often as one likes, and does nothing within `record`.
    void requestFrame() { follow(pump_.ask()); }
    /// The same for what nobody waits for, such as a tick. Without a graphics card such frames are paced (`CalmPace`).
    void requestCalmFrame();
    /// The same, for the very frame that the window is making, even while the last one is not on the screen yet: for a
    /// plot that follows another one, called while that records.
    void joinFrame() { follow(pump_.join(), Start::atOnce); }

    /// Why the plot cannot be shown, for the person; empty while it can.
    QString problem() const { return problem_; }
    /// Frames recorded so far.
    std::uint64_t framesDrawn() const { return gpu_.framesRecorded(); }
    /// Samples a pixel that the plot was last drawn with; 0 before.
    int sampleCount() const { return *sampleCount_; }
    /// Bytes given to the GPU so far, as of the last repaint.
    std::uint64_t uploadedBytes() const { return *uploadedBytes_; }
    const FramePump& pump() const { return pump_; }

    // For `WindowFrames`.
    /// The last frame went into a picture and not to the screen.
    void pictureTaken() { follow(pump_.pictureTaken()); }
    /// The atlas moved its glyphs: a frame that was drawn with the old places is made anew.
    void glyphsMoved();

 signals:
    void problemChanged();

 protected:
    /// Records one frame with `gpu`, for a view of `size` points at `pixelRatio` device pixels a point; `now` is real
    /// time in seconds. True while something still moves, so that another frame follows. Not called without a size, and
    /// a second time for one frame when a new glyph moved the others.
    virtual bool record(Gpu& gpu, QSizeF size, double pixelRatio, double now) = 0;
    /// Whether the frame just recorded shows input that `noteInput` told of.
    virtual bool showsInput() const { return true; }
    /// Whether someone has a hand on the plot, so that what moves is drawn as often as the screen shows it.
    virtual bool interacting() const { return false; }
    /// Whether the frame that is being recorded is one of those that come seldom, since nobody has a hand on the plot
    /// and the processor draws it (`CalmPace`).
    bool isCalmFrame() const { return calmFrame_; }
    /// The processor draws, as of the last repaint.
    bool drawnBySoftware() const { return *software_; }
    /// A frame came to the screen.
    virtual void frameShown() {}
    /// Something beside the plot has moved, such as the crosshair, which costs the window a frame of its own. Calls
    /// `frameBegins` now, or when the plot's next frame begins if that is held back.
    void joinNextFrame();
    /// The window makes a frame: what waited for it can change now.
    virtual void frameBegins() {}

    /// What `record` is given; buffers may be made before the first frame.
    FrameRecorder& gpu() { return gpu_; }
    /// Glyphs of the window's one atlas.
    GlyphSource& glyphs() { return glyphs_; }
    /// While on, each frame that comes to the screen asks for the next one.
    void setLive(bool on) { follow(pump_.setLive(on)); }
    /// Where the wait for the frame before is timed; null for nowhere. `input` times what `noteInput` tells of too. It
    /// must outlive the frames.
    void setPerf(Perf* perf, bool input);
    /// Input came that the next frame may show; the event's own time stamp.
    void noteInput(std::uint64_t timestampMs) { follower_->input(timestampMs); }

    bool eventFilter(QObject* watched, QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void componentComplete() override;
    void geometryChange(const QRectF& now, const QRectF& before) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void updatePolish() final;
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData*) final;

 private:
    enum class Start : unsigned char {
        paced,   ///< where the processor draws on a thread of its own, no sooner than the screen has use for it
        atOnce,  ///< for the very frame that the window is making
    };
    void follow(FramePump::Order order, Start start = Start::paced);
    void schedule();
    void enterWindow(QQuickWindow* window);
    void updateOnScreen();
    bool recordOnce();
    std::optional<Rgba8> groundUnder() const;
    double calmWait() const;
    void swapped();
    void timeGate();
    void setProblem(const QString& problem);

    SystemClock clock_;
    FramePump pump_;
    FrameRecorder gpu_;
    SharedGlyphs glyphs_{QStringLiteral("Saira")};
    WindowFrames* window_ = nullptr;  ///< of the window that the item is in
    std::shared_ptr<FrameFollower> follower_ = std::make_shared<FrameFollower>();  ///< shared with the render thread
    QMetaObject::Connection following_, swaps_;
    QBasicTimer late_, calm_, hold_;
    CalmPace pace_;
    ScreenPace screenPace_;
    Perf* perf_ = nullptr;
    QString problem_;
    bool onScreen_ = false;
    bool threaded_ = false;  ///< the scene graph draws on a thread of its own
    bool onBareWindow_ = false;
    bool calmFrame_ = false;
    unsigned recordedGlyphs_ = 0;  ///< generation that the last frame was drawn with
    int joinedForGlyphs_ = 0;      ///< times since the last hand-over
    double recordedAt_ = 0;        ///< seconds, monotonic
    double processorAt_ = 0;       ///< seconds of processor time when the last frame was begun
    std::shared_ptr<std::atomic<bool>> software_ = std::make_shared<std::atomic<bool>>(false);
    std::shared_ptr<std::atomic<int>> sampleCount_ = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<std::atomic<std::uint64_t>> uploadedBytes_ = std::make_shared<std::atomic<std::uint64_t>>(0);
    std::uint64_t countedBytes_ = 0;  ///< of those, told to `perf_`
};

}  // namespace vmr
