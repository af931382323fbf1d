#include "app/WindowShell.h"

#include <QAbstractEventDispatcher>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QScreen>
#include <QThread>
#include <clocale>
#include <cstdio>
#include <memory>
#include <utility>

#include "base/Clock.h"
#include "base/Log.h"
#include "model/AppModel.h"
#include "model/SimTrading.h"
#include "perf/Perf.h"
#include "perf/PerfPinger.h"
#include "ui/pane/PaneBinding.h"
#include "ui/pane/PaneViewModel.h"
#include "ui/platform/QtLoop.h"
#include "ui/platform/UiSetup.h"
#include "ui/platform/WindowPicture.h"
#include "ui/shell/ServiceViewModel.h"
#include "workspace/WindowPlacing.h"
#include "workspace/WorkspaceStore.h"

namespace vmr {

namespace {

ScreenRect rectOf(const QRect& rect) {
    return {double(rect.x()), double(rect.y()), double(rect.width()), double(rect.height())};
}

/// Places the window for its stage, and remembers where it stands.
class WindowStage {
 public:
    /// `size` is one that the person asked for, empty for none. All that it is given outlives it.
    WindowStage(QQuickWindow& window, const AppModel& pane, WorkspaceStore& store, QSize size)
        : window_(window), store_(store), box_(std::make_shared<WorkspaceWindowBox>()) {
        if (!size.isEmpty()) wanted_ = rectOf(QRect(QPoint(), size));
        box_->id = UuidSource().next();
        box_->primary = [&pane] { return std::optional(paneFacts(pane)); };
        box_->frame = [this] { return std::optional(frame()); };
        box_->claimed = true;
        box_->rec = store_.claimNext();
        store_.registerBox(box_);
    }
    ~WindowStage() { store_.remove(box_->id); }
    WindowStage(const WindowStage&) = delete;
    WindowStage& operator=(const WindowStage&) = delete;

    const std::optional<WindowRecord>& record() const { return box_->rec; }

    void apply(bool entered) {
        const auto screens = screensNow();
        if (!screens) return;
        std::optional<std::vector<double>> saved;
        if (entered && box_->rec && !std::exchange(restored_, true)) saved = box_->rec->frame;
        const ScreenRect place = entered ? enteredPlace(*screens, saved, wanted_) : signInPlace(*screens);
        window_.setGeometry(qRound(place.x), qRound(place.y), qRound(place.width), qRound(place.height));
    }

 private:
    // A size that was asked for holds for one run: it does not take the remembered frame's place.
    std::array<double, 4> frame() const {
        if (wanted_ && box_->rec && box_->rec->frame.size() == 4) {
            const auto& kept = box_->rec->frame;
            return {kept[0], kept[1], kept[2], kept[3]};
        }
        const QScreen* first = QGuiApplication::primaryScreen();
        return storedFrame(rectOf(window_.geometry()), first ? rectOf(first->geometry()) : ScreenRect());
    }
    std::optional<Screens> screensNow() const {
        const QScreen* first = QGuiApplication::primaryScreen();
        const QScreen* own = window_.screen() ? window_.screen() : first;
        if (!first || !own) return std::nullopt;
        Screens screens{rectOf(first->geometry()), rectOf(own->availableGeometry()), {}};
        for (const QScreen* screen : QGuiApplication::screens())
            screens.free.push_back(rectOf(screen->availableGeometry()));
        return screens;
    }

    QQuickWindow& window_;
    WorkspaceStore& store_;
    std::shared_ptr<WorkspaceWindowBox> box_;
    std::optional<ScreenRect> wanted_;
    bool restored_ = false;
};

bool savePicture(QQuickWindow& window, const std::string& file) {
    const QImage picture = windowPicture(window);
    if (!picture.isNull() && picture.save(QString::fromStdString(file), "PNG")) return true;
    std::fprintf(stderr, "velmora: the picture of the window cannot be saved to %s\n", file.c_str());
    return false;
}

void print(const std::string& line) { Log::standardOutput().line(line); }

/// Times every run of the main thread, from the first event after a wait to the next wait. The dispatcher's own news of
/// waking come too late for that: it has handled much by then, and the GLib one everything.
class TimedApplication final : public QGuiApplication {
 public:
    using QGuiApplication::QGuiApplication;

    /// `perf` must outlive the application.
    void watchTurns(Perf& perf) {
        perf_ = &perf;
        auto* dispatcher = QAbstractEventDispatcher::instance();
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            if (woke_ > 0) perf_->turn((clock_.monotonic() - std::exchange(woke_, 0)) * 1000);
        });
    }

    bool notify(QObject* receiver, QEvent* event) override {
        if (QThread::currentThread() == thread() && perf_ && woke_ == 0) woke_ = clock_.monotonic();
        return QGuiApplication::notify(receiver, event);
    }

 private:
    SystemClock clock_;
    Perf* perf_ = nullptr;
    double woke_ = 0;  // seconds, monotonic; 0 while it waits
};

int runViews(TimedApplication& app, QtLoop& loop, const WindowPane& pane, const WindowShellOptions& options,
             const WindowShellHooks& hooks) {
    Perf& perf = Perf::shared();
    const PerfPinger pinger(perf, loop);
    app.watchTurns(perf);
    SimTrading trading(pane.sim,
                       [&pane](const std::string& reason) { pane.model.notices.flashToast("Simulator", reason); });
    PaneViewModel view;
    view.setSurroundings({&pane.clock, &pane.model.sessionTime(), &loop, &trading, &perf, pane.bench, print,
                          [&loop] { loop.post([] { QCoreApplication::exit(0); }); }});
    const PaneBinding binding(pane.model, view, loop, options.setupProblem, options.signInHint, &pane.sim);
    ServiceViewModel service;
    service.follow(pane.announcements, pane.updates, [](const QString& url) { QDesktopServices::openUrl(QUrl(url)); });
    QQmlApplicationEngine engine;
    registerQml(engine);
    engine.setInitialProperties({{QStringLiteral("pane"), QVariant::fromValue(&view)},
                                 {QStringLiteral("service"), QVariant::fromValue(&service)}});
    engine.load(QUrl(QStringLiteral("qrc:/Velmora/Main.qml")));
    auto* window = engine.rootObjects().isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(engine.rootObjects().first());
    if (!window) {
        std::fprintf(stderr, "velmora: the window cannot be made\n");
        return 1;
    }
    WindowStage stage(*window, pane.model, pane.workspace, QSize(options.width, options.height));
    if (stage.record() && !pane.hasFirstSymbol) pane.model.applyRestore(stage.record()->primary);
    QObject::connect(&view.session, &SessionViewModel::enteredChanged, window, [&] {
        Perf::shared().startUp("entered");
        stage.apply(view.session.entered());
    });
    stage.apply(view.session.entered());
    rememberRasteriser(*window, rasteriserRecord(options.data));
    window->show();
    Perf::shared().startUp("window");
    // `exit` has no effect before the loop runs, so it is posted.
    if (hooks.started) hooks.started([&loop](int status) { loop.post([status] { QCoreApplication::exit(status); }); });
    if (options.seconds > 0) loop.after(options.seconds, [] { QCoreApplication::exit(0); });
    const int status = app.exec();
    pane.workspace.saveAtEnd();
    if (!options.screenshot.empty() && !savePicture(*window, options.screenshot) && status == 0) return 1;
    return status;
}

}  // namespace

int runWindow(int& argc, char** argv, const WindowShellOptions& options, WindowShellHooks hooks) {
    prepareGraphics(rasteriserRecord(options.data));
    TimedApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");  // the application object takes the environment's
    QGuiApplication::setApplicationName(QStringLiteral("Velmora"));
    Perf::shared().startUp("application");
    prepareUpdates();
    registerFonts();
    QtLoop loop;
    const int status = runViews(app, loop, hooks.makePane(loop), options, hooks);
    if (hooks.ending) hooks.ending();
    return status;
}

}  // namespace vmr
