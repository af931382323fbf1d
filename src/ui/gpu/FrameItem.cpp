#include "ui/gpu/FrameItem.h"

#include <QCoreApplication>
#include <QPointer>
#include <QQuickWindow>
#include <QScreen>
#include <QThread>
#include <QTimerEvent>
#include <cmath>
#include <functional>
#include <utility>

#include "base/Log.h"
#include "perf/Perf.h"
#include "ui/gpu/FrameNode.h"
#include "ui/gpu/WindowFrames.h"

namespace vmr {

FrameItem::FrameItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    enterWindow(window());  // a parent in a window has brought it there already
    updateOnScreen();
}

FrameItem::~FrameItem() { enterWindow(nullptr); }

// Qt swaps on its render thread, and `FrameFollower::swapped` is called there; the item hears of it in a later turn of
// the main thread.
void FrameItem::enterWindow(QQuickWindow* window) {
    disconnect(following_);
    disconnect(swaps_);
    if (window_) {
        window_->remove(*this);
        static_cast<QObject*>(window_)->parent()->removeEventFilter(this);
    }
    window_ = window ? &WindowFrames::of(*window) : nullptr;
    if (!window) return;
    window_->add(*this);
    window->installEventFilter(this);
    glyphs_.setAtlas(window_->atlas());
    following_ = connect(
        window, &QQuickWindow::frameSwapped, window, [follower = follower_] { follower->swapped(); },
        Qt::DirectConnection);
    swaps_ = connect(window, &QQuickWindow::frameSwapped, this, &FrameItem::swapped);
}

void FrameItem::setPerf(Perf* perf, bool input) {
    perf_ = perf;
    follower_->setPerf(input ? perf : nullptr);
}

void FrameItem::setProblem(const QString& problem) {
    if (problem == problem_) return;
    problem_ = problem;
    if (!problem_.isEmpty()) Log::standardOutput().line("[chart] pipeline error: " + problem_.toStdString());
    emit problemChanged();
}

// `polish` and `update` go together: one alone gives a frame that is recorded and not shown, or shown and not recorded.
void FrameItem::schedule() {
    hold_.stop();
    frameBegins();
    polish();
    update();
}

void FrameItem::follow(FramePump::Order order, Start start) {
    if (order == FramePump::Order::nothing) return;
    if (order == FramePump::Order::watch) return late_.start(static_cast<int>(FramePump::longestWait * 1000), this);
    late_.stop();
    const double wait = *software_ && threaded_ && start == Start::paced ? screenPace_.wait(clock_.monotonic()) : 0;
    if (wait <= 0) return schedule();
    if (!hold_.isActive()) hold_.start(static_cast<int>(std::lround(wait * 1000)), Qt::PreciseTimer, this);
}

void FrameItem::joinNextFrame() {
    if (!hold_.isActive()) frameBegins();
}

double FrameItem::calmWait() const { return *software_ && !interacting() ? pace_.wait(clock_.monotonic()) : 0; }

void FrameItem::requestCalmFrame() {
    if (calm_.isActive()) return;
    const double wait = calmWait();
    if (wait > 0) return calm_.start(static_cast<int>(std::ceil(wait * 1000)), this);
    calmFrame_ = *software_ && !interacting();
    requestFrame();
}

void FrameItem::timerEvent(QTimerEvent* event) {
    if (event->timerId() == calm_.timerId()) {
        calm_.stop();
        calmFrame_ = !interacting();
        return requestFrame();
    }
    if (event->timerId() == hold_.timerId()) return schedule();
    if (event->timerId() != late_.timerId()) return QQuickItem::timerEvent(event);
    late_.stop();
    follow(pump_.late());
}

void FrameItem::componentComplete() {
    QQuickItem::componentComplete();
    requestFrame();
}

void FrameItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickItem::geometryChange(now, before);
    if (now.size() != before.size()) follow(pump_.resized(), Start::atOnce);
}

void FrameItem::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemSceneChange) {
        enterWindow(data.window);
        follow(pump_.hidden());  // the window before shows no more of it
    }
    if (change == ItemSceneChange || change == ItemVisibleHasChanged) {
        updateOnScreen();
        if (window() && isVisible()) follow(pump_.visible());  // a window that is not shown may be drawn into a picture
    }
    if (change == ItemDevicePixelRatioHasChanged) follow(pump_.resized(), Start::atOnce);
}

// A window that is hidden, minimised or on another desktop is not exposed. Its state does not tell: some window
// managers leave a window on the screen that asked to be minimised.
bool FrameItem::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Expose || event->type() == QEvent::Hide) updateOnScreen();
    return QQuickItem::eventFilter(watched, event);
}

void FrameItem::updateOnScreen() {
    const bool now = window() && window()->isVisible() && window()->isExposed() && isVisible();
    if (std::exchange(onScreen_, now) == now) return;
    follow(now ? pump_.visible() : pump_.hidden());
}

bool FrameItem::recordOnce() {
    const bool moves = record(gpu_, size(), window()->effectiveDevicePixelRatio(), clock_.monotonic());
    recordedGlyphs_ = glyphs_.generation();
    return moves;
}

void FrameItem::updatePolish() {
    pump_.beginRecord();
    if (!window_ || width() <= 0 || height() <= 0) return pump_.notRecorded();
    const unsigned glyphsBefore = glyphs_.generation();
    calm_.stop();
    if (hold_.isActive()) frameBegins();
    hold_.stop();
    processorAt_ = processorSeconds();
    bool moves = recordOnce(), input = showsInput();
    const bool moved = glyphs_.generation() != glyphsBefore;
    if (moved) {  // what was drawn before the atlas moved its glyphs is stale
        moves = recordOnce();
        input = input || showsInput();
    }
    follower_->recorded(input);
    recordedAt_ = clock_.monotonic();
    pace_.begun(recordedAt_);
    const QScreen* screen = window()->screen();
    screenPace_.begun(recordedAt_, screen ? screen->refreshRate() : 0);
    calmFrame_ = false;
    const bool calm = moves && calmWait() > 0;
    pump_.recorded(moves && !calm);
    if (calm) requestCalmFrame();
    if (moved) window_->glyphsMoved();  // in the other items as well
}

// When the atlas is too small for all that one frame shows, the items would take turns at moving each other's glyphs
// for ever. Some texts are then wrong.
void FrameItem::glyphsMoved() {
    constexpr int most = 2;
    if (framesDrawn() == 0 || recordedGlyphs_ == glyphs_.generation() || joinedForGlyphs_ >= most) return;
    ++joinedForGlyphs_;
    joinFrame();
}

std::optional<Rgba8> FrameItem::groundUnder() const {
    const QColor color = window()->color();
    if (!onBareWindow_ || color.alpha() != 255) return std::nullopt;
    return Rgba8(Rgba{color.redF(), color.greenF(), color.blueF(), 1.0F});
}

// On the render thread with the main thread blocked, or on the main thread.
QSGNode* FrameItem::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    const auto report = [self = QPointer<FrameItem>(this)](const QString& problem) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, problem] {
                if (self) self->setProblem(problem);
            },
            Qt::QueuedConnection);
    };
    joinedForGlyphs_ = 0;
    threaded_ = QThread::currentThread() != thread();
    if (!rhiOf(*window())) {
        report(tr("The chart needs OpenGL, Vulkan, Metal or Direct3D, and this window has only software drawing."));
        delete old;
        return nullptr;
    }
    auto* node = static_cast<FrameNode*>(old);
    if (!node) {
        node = new FrameNode(*window());
        node->onProblem = report;
        node->sampleCount = sampleCount_;
        node->software = software_;
        node->uploadedBytes = uploadedBytes_;
    }
    node->setItemSize(size());
    node->replay().setGround(groundUnder());
    const bool given = pump_.handOver() && node->replay().takeFrame(gpu_);
    if (given) {
        follower_->handedOver(pump_.frame());
        timeGate();
    }
    node->takeGlyphs(glyphs_.atlas());
    node->markDirty(QSGNode::DirtyMaterial);
    if (!old && !given && pump_.lost() == FramePump::Order::schedule) {
        polish();  // and not `follow`: its timer belongs to the main thread
        update();
    }
    return node;
}

// The frame is handed over: times how long it waited for the one before it.
void FrameItem::timeGate() {
    constexpr double least = 1.0;  // milliseconds
    const double waited = (clock_.monotonic() - recordedAt_) * 1000.0;
    if (perf_ && waited > least) perf_->time("gpuGate", waited);
}

void FrameItem::swapped() {
    const bool awaited = pump_.state() == FramePump::State::onItsWay;
    const auto order = pump_.shown(follower_->shownFrame());
    const std::uint64_t uploaded = *uploadedBytes_;
    if (perf_ && uploaded > countedBytes_) perf_->uploaded(static_cast<double>(uploaded - countedBytes_));
    countedBytes_ = uploaded;
    if (awaited && pump_.state() != FramePump::State::onItsWay) {
        late_.stop();
        pace_.shown(processorSeconds() - processorAt_);
        frameShown();
    }
    follow(order);
}

}  // namespace vmr
