#include "ui/chart/ChartItem.h"

#include <QQuickWindow>
#include <QScreen>
#include <cmath>
#include <utility>

#include "perf/Perf.h"
#include "ui/chart/ChartItemDrawing.h"
#include "ui/chart/OscillatorItem.h"

namespace vmr {

ChartItem::ChartItem(QQuickItem* parent) : FrameItem(parent), drawing_(std::make_unique<Drawing>()) {
    setAcceptedMouseButtons(Qt::LeftButton | Qt::RightButton);
    setAcceptHoverEvents(true);
    setActiveFocusOnTab(true);
    connect(this, &FrameItem::problemChanged, this, &ChartItem::endInput);
    constexpr int pillPeriod = 100;  // ms
    drawing_->pillTimer.setInterval(pillPeriod);
    connect(&drawing_->pillTimer, &QTimer::timeout, this, [this] {
        pillComes_ = true;
        joinNextFrame();
    });
    connect(hud(), &HudState::shownChanged, this, &ChartItem::coverSoon);
    makeView();
}

ChartItem::~ChartItem() { leavePane(); }

// Clocks, loop, account and probe are the pane's. The panes of one program share theirs, and then the view stays what
// it is, its size and its camera's followers included.
void ChartItem::makeView() {
    const PaneViewModel::Surroundings none;
    const auto& at = pane_ ? pane_->surroundings() : none;
    Drawing& own = *drawing_;
    MainLoop& main = at.main ? *at.main : own.loop;
    const Clock& clock = at.clock ? *at.clock : own.clock;
    SessionTime& session = at.session ? *at.session : own.session;
    own.drive.reset();
    own.camera.end();
    const Drawing::Given given{&clock, &session, &main, at.trading, at.perf};
    if (!own.view || own.given != given) {
        setLive(false);  // of the view before
        own.view.reset();
        own.view = std::make_unique<ChartView>(
            ChartView::Surroundings{gpu(), glyphs(), session, clock, main, at.perf, at.trading});
        own.given = given;
        watchView();
    }
    setPerf(at.perf, at.bench.input);
    if (at.bench.baseline) own.camera = own.view->viewportState()->changed.connect([this] { pane_->notifyAll(); });
    if (at.bench.drives() && at.perf && at.print)
        own.drive =
            std::make_unique<PerfDrive>(renderer(), own.view->input(), main, *at.perf, at.bench, at.print, at.quit);
}

void ChartItem::watchView() {
    ChartView& view = *drawing_->view;
    view.setSize(width(), height());
    view.onNeedsFrame = [this](ChartView::Need need) {
        if (need == ChartView::Need::calm)
            requestCalmFrame();
        else if (need == ChartView::Need::join)
            joinFrame();
        else
            requestFrame();
    };
    view.onMoved = [this] { updateCrosshair(); };  // with the frame, not after it
    view.onPeerCrosshair = [this] { updatePeerCrosshair(); };
    view.onStartOver = [this] {
        drawing_->covered.startOver();
        endOrderMenu();
    };
    view.onLiveRefresh = [this](bool on) { setLiveRefresh(on); };
    view.below.onNeedsFrame = [this](ChartView::Need need) {
        if (oscillator_) oscillator_->ask(need);
    };
    coverSoon();
    watchOscillatorPointer();
    oscillatorResized();
    view.input().pointer.onReport = [this](std::optional<ChartPoint> point) { pointerMoved(point); };
    view.input().onCursor = [this](ChartCursor cursor) { showCursor(cursor); };
}

void ChartItem::setLiveRefresh(bool on) {
    const auto& print = pane_ ? pane_->surroundings().print : nullptr;
    const auto* screen = window() ? window()->screen() : nullptr;
    if (on && print)
        print("[perf] liveRefresh ON — frame clock @ up to " +
              std::to_string(std::lround(screen ? screen->refreshRate() : 60)) + " Hz");
    setLive(on);
}

PaneViewModel* ChartItem::pane() const { return pane_; }

void ChartItem::leavePane() {
    if (!pane_) return;
    disconnect(&pane_->chart, nullptr, this, nullptr);
    drawing_->view->setSource(nullptr);
    pane_->chart.setPort(nullptr);
}

void ChartItem::setPane(PaneViewModel* pane) {
    if (pane == pane_) return;
    leavePane();
    pane_ = pane;
    makeView();
    if (pane_) {
        connect(&pane_->chart, &ChartViewModel::sourceChanged, this, &ChartItem::readPane);
        connect(&pane_->chart, &ChartViewModel::accountChanged, this, [this] { drawing_->view->redraw(); });
        readPane();
    }
    requestFrame();
    emit paneChanged();
}

void ChartItem::readPane() {
    drawing_->view->setSource(pane_->chart.source());
    if (pane_->chart.source()) pane_->chart.setPort(drawing_->view.get());
}

ChartRenderer& ChartItem::renderer() { return drawing_->view->renderer(); }

ChartInput& ChartItem::input() {
    drawing_->view->catchUp();
    return drawing_->view->input();
}

const std::shared_ptr<ViewportState>& ChartItem::viewportState() const { return drawing_->view->viewportState(); }

void ChartItem::geometryChange(const QRectF& now, const QRectF& before) {
    FrameItem::geometryChange(now, before);
    if (now.size() == before.size()) return;
    drawing_->view->setSize(now.width(), now.height());
    updateCrosshair();
}

bool ChartItem::record(Gpu&, QSizeF size, double pixelRatio, double now) {
    const bool moves = drawing_->view->record(size.width(), size.height(), pixelRatio, now, isCalmFrame());
    updateHud();  // with the frame, as the crosshair
    for (CrosshairState* one : {&drawing_->crosshair, &drawing_->peerCrosshair})
        one->updateBoxes(drawing_->view->axes().labels());
    updateEntryPill();
    return moves;
}

bool ChartItem::interacting() const { return handsOn(); }

bool ChartItem::handsOn() const { return drawing_->view->handsOn(); }

void ChartItem::setOscillator(OscillatorItem* oscillator) {
    oscillator_ = oscillator;
    oscillatorResized();
}

void ChartItem::oscillatorResized() {
    drawing_->view->below.height = oscillator_ ? oscillator_->shownHeight() : 0;
    if (drawing_->view->below.height <= 0) pointAtOscillator(std::nullopt);
}

std::optional<OscInput> ChartItem::oscillatorInput() const { return drawing_->view->oscillator(); }

bool ChartItem::showsInput() const { return drawing_->view->inputLagMs().has_value(); }

void ChartItem::frameShown() {
    if (Perf* perf = renderer().perf; perf && !renderer().candles().empty()) perf->startUp("drawn");
}

}  // namespace vmr
