#include "app/WindowShell.h"

#include <QAbstractEventDispatcher>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QImage>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QThread>
#include <clocale>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "app/Program.h"
#include "app/ShellWindow.h"
#include "base/Clock.h"
#include "base/WeakTask.h"
#include "perf/Perf.h"
#include "perf/PerfPinger.h"
#include "services/cloud/UpdateChecker.h"
#include "ui/platform/HeldKeys.h"
#include "ui/platform/QtLoop.h"
#include "ui/platform/UiSetup.h"
#include "ui/platform/WindowPicture.h"
#include "ui/shell/ServiceViewModel.h"
#include "ui/shell/ShellViewModel.h"
#ifdef VMR_WITH_3D
#include "ui/surface3d/Surface3DModule.h"
#endif
#include "workspace/ShellWindows.h"
#include "workspace/WorkspaceStore.h"

namespace vmr {

namespace {

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

    /// The desktop asks the program to end, by its dock or with the session. Not by closing windows one by one: they
    /// would be gone from the picture that the next run begins with.
    bool event(QEvent* event) override {
        if (event->type() != QEvent::Quit) return QGuiApplication::event(event);
        exit(0);
        return true;
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

// The file of one picture of several: with the window's number before the ending.
std::string numbered(const std::string& file, int number) {
    std::filesystem::path path(file);
    path.replace_filename(path.stem().string() + "-" + std::to_string(number) + path.extension().string());
    return path.string();
}

constexpr int switchingPractice = -1;  // the event loop's status; no status of a process

/// All windows on the screen.
class Shell {
 public:
    /// All outlive it.
    Shell(QtLoop& loop, Program& program, const WindowShellOptions& options)
        : options_(options),
          look_(&engine_),
          windows_(program.windows()),
          kit_{look_,
               loop,
               program.sim(),
               service_,
               windows_,
               program.settings(),
               program.keys(),
               program.start().options().bench,
               program.start().options().pressure,
               [this, &loop](std::function<void()> task) { loop.post(whileThere_(std::move(task))); },
               program.start().practice() != nullptr,
               [&loop] { loop.post([] { QCoreApplication::exit(switchingPractice); }); },
               updateCheck(program),
               program.start().setupProblem().value_or(""),
               program.start().signInHint(),
               QSize(options.width, options.height)} {
        service_.follow(program.announcements(), program.updates(),
                        [](const QString& url) { QDesktopServices::openUrl(QUrl(url)); });
        registerQml(engine_);
#ifdef VMR_WITH_3D
        registerSurface3D();
#endif
        look_.loadUrl(QUrl(QStringLiteral("qrc:/Velmora/Main.qml")));
        windows_.onOpened = [this](WindowPanes& panes) { show(panes); };
        windows_.onClosing = [this](WindowPanes& panes) {
            std::erase_if(shown_, [&panes](const auto& one) { return &one->panes() == &panes; });
        };
        windows_.onPaneClosing = [this](WindowPanes& panes, AppModel& pane) {
            for (const auto& one : shown_)
                if (&one->panes() == &panes) one->forget(pane);
        };
        windows_.openFirst(!program.start().options().tapeSymbol.empty());
    }
    ~Shell() {
        windows_.onOpened = windows_.onClosing = {};
        windows_.onPaneClosing = {};
    }
    Shell(const Shell&) = delete;
    Shell& operator=(const Shell&) = delete;

    /// The first window has been made.
    bool stands() const { return !shown_.empty(); }

    /// Whether all pictures that were asked for are saved.
    bool savePictures() const {
        bool saved = true;
        for (const auto& one : shown_) {
            const std::string file =
                shown_.size() == 1 ? options_.screenshot : numbered(options_.screenshot, one->panes().number());
            const QImage picture = windowPicture(*one->window());
            if (!picture.isNull() && picture.save(QString::fromStdString(file), "PNG")) continue;
            std::fprintf(stderr, "velmora: the picture of the window cannot be saved to %s\n", file.c_str());
            saved = false;
        }
        return saved;
    }

 private:
    void show(WindowPanes& panes) {
        auto made = std::make_unique<ShellWindow>(kit_, panes);
        if (!made->window()) return tellFault();
        if (shown_.empty()) rememberRasteriser(*made->window(), rasteriserRecord(options_.data));
        made->window()->show();
        shown_.push_back(std::move(made));
    }
    // None where there is nobody to ask, or where nothing may be asked yet.
    std::function<void(const ShellViewModel::Tell& tell)> updateCheck(Program& program) {
        if (program.start().endpoints().downloadsUrl.empty() || program.start().setupProblem()) return {};
        return [this, &program](const ShellViewModel::Tell& tell) { checkForUpdates(program.updates(), tell); };
    }
    // A newer build stands in its banner, though it was dismissed before.
    void checkForUpdates(UpdateChecker& updates, const ShellViewModel::Tell& tell) {
        updates.checkManually([this, tell](const std::optional<UpdateChecker::Answer>& answer) {
            answer ? tell(QString::fromStdString(answer->title), QString::fromStdString(answer->text))
                   : service_.showUpdate();
        });
    }
    void tellFault() const {
        std::fprintf(stderr, "velmora: the window cannot be made\n");
        for (const QQmlError& error : look_.errors())
            std::fprintf(stderr, "velmora: %s\n", qPrintable(error.toString()));
    }

    const WindowShellOptions& options_;
    QQmlEngine engine_;
    QQmlComponent look_;
    ServiceViewModel service_;
    ShellWindows& windows_;
    const WindowKit kit_;
    std::vector<std::unique_ptr<ShellWindow>> shown_;
    WeakTask whileThere_;
};

int runShell(QtLoop& loop, Program& program, const WindowShellOptions& options, const WindowShellHooks& hooks) {
    const Shell shell(loop, program, options);
    if (!shell.stands()) return 1;
    Perf::shared().startUp("window");
    // `exit` has no effect before the loop runs, so it is posted.
    if (hooks.started) hooks.started([&loop](int status) { loop.post([status] { QCoreApplication::exit(status); }); });
    if (options.seconds > 0) loop.after(options.seconds, [] { QCoreApplication::exit(0); });
    const int status = QCoreApplication::exec();
    program.workspace().saveAtEnd();
    if (status == switchingPractice) return status;
    if (hooks.lastLook) hooks.lastLook();
    if (!options.screenshot.empty() && !shell.savePictures() && status == 0) return 1;
    return status;
}

}  // namespace

int runWindow(int& argc, char** argv, const WindowShellOptions& options, WindowShellHooks hooks) {
    prepareGraphics(rasteriserRecord(options.data));
    TimedApplication app(argc, argv);
    std::setlocale(LC_NUMERIC, "C");                    // the application object takes the environment's
    QGuiApplication::setQuitOnLastWindowClosed(false);  // the shell knows which window is the last
    QGuiApplication::setApplicationName(QStringLiteral("Velmora"));
    Perf::shared().startUp("application");
    const HeldKeys heldKeys(app);
    prepareUpdates();
    registerFonts();
    QtLoop loop;
    const PerfPinger pinger(Perf::shared(), loop);
    app.watchTurns(Perf::shared());
    while (true) {
        const int status = runShell(loop, hooks.makeProgram(loop), options, hooks);
        if (hooks.ending) hooks.ending();
        if (status == switchingPractice) {
            hooks.switchPractice();
            continue;
        }
        if (hooks.ended) hooks.ended();
        return status;
    }
}

}  // namespace vmr
