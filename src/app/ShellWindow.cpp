#include "app/ShellWindow.h"

#include <QCoreApplication>
#include <QQmlComponent>
#include <QQuickWindow>

#include "base/Log.h"
#include "model/AppModel.h"
#include "perf/Perf.h"
#include "sim/SimEngine.h"
#include "workspace/HotkeyRouter.h"
#include "workspace/SettingsEditor.h"
#include "workspace/SettingsLayout.h"
#include "workspace/SettingsTransfer.h"
#include "workspace/ShellWindows.h"

namespace vmr {

namespace {
void endProgram() { QCoreApplication::exit(0); }

// What the person should know before the program ends; empty for nothing.
QString endNotice(const SimEngine& sim) {
    const auto working = sim.orders().size();
    if (working == 0) return {};
    return working == 1 ? QObject::tr("1 working order will wait until Velmora runs again")
                        : QObject::tr("%1 working orders will wait until Velmora runs again").arg(working);
}
}  // namespace

ShellWindow::Views::Views(AppModel& pane, const WindowKit& kit, int window)
    : model(pane),
      trading(kit.sim, [&pane](const std::string& reason) { pane.notices.flashToast("Simulator", reason); }) {
    view.setSurroundings({&model.clock(), &model.sessionTime(), &kit.main, &trading, &Perf::shared(), kit.bench,
                          [](const std::string& line) { Log::standardOutput().line(line); },
                          [&main = kit.main] { main.post(endProgram); }});
    binding = std::make_unique<PaneBinding>(model, view, kit.main, kit.setupProblem, kit.signInHint, &kit.sim);
    // the view that asked for it may go with it
    view.session.setOnSignOutAndClose(
        [&kit, window] { kit.later([&windows = kit.windows, window] { windows.signOut(window); }); });
    view.session.setOnPractice(kit.switchPractice);
    setSettingsActions(kit);
}

void ShellWindow::Views::setSettingsActions(const WindowKit& kit) {
    PaneHost& panes = kit.windows.panes();
    view.settings.setActions(
        {.applyToAll = [this, &panes] { applyToAllPanes(panes, model); },
         .reset = [this] { resetSettings(model); },
         .resetAccount = [this, &kit] { kit.sim.resetAccount(model.config->simBalance); },
         .exportTo = [this, &kit](const std::string& file) { return kit.settings.exportTo(file, model).value_or(""); },
         .importFrom = [this,
                        &kit](const std::string& file) { return kit.settings.importFrom(file, model).value_or(""); }});
    const auto showKeys = [this, &keys = kit.keys] {
        view.settings.setKeyOf([&keys](const SettingsRow& row) { return keys.keyOf(actionOf(row)); });
    };
    keysChanged = kit.keys.changed.connect(showKeys);
    showKeys();
    panesChanged = panes.sizeChanged.connect([this, &panes] { view.settings.setHasOtherPanes(panes.size() > 1); });
    view.settings.setHasOtherPanes(panes.size() > 1);
}

ShellWindow::ShellWindow(const WindowKit& kit, WindowPanes& panes)
    : kit_(kit),
      panes_(panes),
      first_(std::make_unique<Views>(panes.primary(), kit, panes.number())),
      view_(first_->view) {
    setActions();
    follow();
    changed_ = panes_.changed.connect([this] { follow(); });
    QObject* made =
        kit.look.createWithInitialProperties({{QStringLiteral("view"), QVariant::fromValue(&view_)},
                                              {QStringLiteral("service"), QVariant::fromValue(&kit.service)},
                                              {QStringLiteral("shell"), QVariant::fromValue(&menu_)}});
    window_.reset(qobject_cast<QQuickWindow*>(made));
    if (!window_) {
        delete made;
        return;
    }
    stage_ = std::make_unique<WindowStage>(*window_, panes, kit.size);
    QObject::connect(&first_->view.session, &SessionViewModel::enteredChanged, window_.get(), [this] {
        Perf::shared().startUp("entered");
        stage_->apply(panes_.entered());
    });
    stage_->apply(panes_.entered());
}

ShellWindow::~ShellWindow() = default;

void ShellWindow::setActions() {
    view_.setActions({.toggleDual = [this] { panes_.toggleDual(); },
                      .moveSplit = [this](double share) { panes_.setSplit(share); },
                      .keepSplit = [this] { panes_.keepSplit(); },
                      .toggleSync = [this](bool fromSecond) { panes_.toggleSync(fromSecond); },
                      .activate = [this](bool second) { panes_.activate(second); },
                      .newWindow = [this] { kit_.windows.open(&panes_); },
                      .close = [this] { close(); },
                      .end = endProgram});
    menu_.setHooks({.newWindow = [this] { return kit_.windows.open(&panes_) != nullptr; },
                    .checkForUpdates = kit_.checkForUpdates,
                    .quit = [this] { askToEnd(); },
                    .leavePractice = kit_.practising ? kit_.switchPractice : std::function<void()>()});
}

void ShellWindow::follow() {
    if (AppModel* dual = panes_.dual(); dual && !second_) {
        second_ = std::make_unique<Views>(*dual, kit_, panes_.number());
        view_.setDual(&second_->view);
    }
    view_.setSplit(panes_.split());
    view_.setSync(panes_.link().syncOn());
}

// The views are dropped a turn later than this, so what they show stays for as long.
void ShellWindow::forget(const AppModel& pane) {
    if (!second_ || &second_->model != &pane) return;
    view_.setDual(nullptr);
    second_->binding.reset();
    second_->view.settings.setActions({});  // their model goes before the views
    second_.release()->deleteLater();
}

void ShellWindow::close() {
    // the window's own event is still under way
    kit_.later(whileThere_([this] { closeNow(); }));
}

void ShellWindow::closeNow() {
    if (kit_.windows.size() > 1) return kit_.windows.close(panes_.number());
    askToEnd();
}

// Asked again, it ends.
void ShellWindow::askToEnd() {
    const QString notice = view_.endNotice().isEmpty() ? endNotice(kit_.sim) : QString();
    if (notice.isEmpty()) return endProgram();
    menu_.closeSheet();
    view_.setEndNotice(notice);
}

}  // namespace vmr
