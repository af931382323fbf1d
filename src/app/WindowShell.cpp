#include "app/WindowShell.h"

#include <QAbstractEventDispatcher>
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

namespace vmr {

namespace {

constexpr QSize loginSize(1000, 580);

/// Sizes the window for its stage: the login frame in the middle of the screen, and all of the screen once entered.
class WindowStage {
 public:
    WindowStage(QQuickWindow& window, QSize enteredSize) : window_(window), enteredSize_(enteredSize) {}

    void apply(bool entered) {
        const QScreen* screen = window_.screen() ? window_.screen() : QGuiApplication::primaryScreen();
        if (!screen) return;
        const QRect free = screen->availableGeometry();
        if (entered && enteredSize_.isEmpty()) {
            window_.setGeometry(free);
            return;
        }
        const QSize size = entered ? enteredSize_ : loginSize;
        const QPoint corner(free.x() + (free.width() - size.width()) / 2,
                            free.y() + (free.height() - size.height()) / 2);
        window_.setGeometry(QRect(QPoint(qMax(corner.x(), free.x()), qMax(corner.y(), free.y())), size));
    }

 private:
    QQuickWindow& window_;
    QSize enteredSize_;
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
    QQmlApplicationEngine engine;
    registerQml(engine);
    engine.setInitialProperties({{QStringLiteral("pane"), QVariant::fromValue(&view)}});
    engine.load(QUrl(QStringLiteral("qrc:/Velmora/Main.qml")));
    auto* window = engine.rootObjects().isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(engine.rootObjects().first());
    if (!window) {
        std::fprintf(stderr, "velmora: the window cannot be made\n");
        return 1;
    }
    WindowStage stage(*window, QSize(options.width, options.height));
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
