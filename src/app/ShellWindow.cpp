#include "app/ShellWindow.h"

#include <QCoreApplication>
#include <QMetaEnum>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>

#include "base/Log.h"
#include "model/AppModel.h"
#include "model/SimDesk.h"
#include "perf/Perf.h"
#include "sim/SimEngine.h"
#include "store/RecentSymbols.h"
#include "ui/platform/WindowPicture.h"
#include "workspace/HotkeyRouter.h"
#include "workspace/KeyChord.h"
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
                          [&main = kit.main] { main.post(endProgram); }, kit.pressure});
    binding = std::make_unique<PaneBinding>(model, view, kit.main, kit.setupProblem, kit.signInHint, &kit.sim);
    // the view that asked for it may go with it
    view.session.setOnSignOutAndClose(
        [&kit, window] { kit.later([&windows = kit.windows, window] { windows.signOut(window); }); });
    view.session.setOnPractice(kit.switchPractice);
    view.sim.setReset({[this] { return model.config->simBalance; }, [this, &kit] { resetAccount(kit); }});
    setSettingsActions(kit);
}

void ShellWindow::Views::resetAccount(const WindowKit& kit) {
    if (trading.mayChange()) kit.sim.resetAccount(model.config->simBalance);
}

void ShellWindow::Views::setSettingsActions(const WindowKit& kit) {
    PaneHost& panes = kit.windows.panes();
    view.settings.setActions(
        {.applyToAll = [this, &panes] { applyToAllPanes(panes, model); },
         .reset = [this] { resetSettings(model); },
         .resetAccount = [this, &kit] { resetAccount(kit); },
         .accountQuestion = [this, &kit] { return simResetQuestion(kit.sim, model.config->simBalance); },
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
      actions_(kit.keys, actionHooks()),
      view_(first_->view, &actions_) {
    setActions();
    follow();
    changed_ = panes_.changed.connect([this] { follow(); });
    QObject* made =
        kit.look.createWithInitialProperties({{QStringLiteral("view"), QVariant::fromValue(&view_)},
                                              {QStringLiteral("service"), QVariant::fromValue(&kit.service)},
                                              {QStringLiteral("shell"), QVariant::fromValue(&menu_)},
                                              {QStringLiteral("picture"), QVariant::fromValue(&picture_)}});
    window_.reset(qobject_cast<QQuickWindow*>(made));
    if (!window_) {
        delete made;
        return;
    }
    stage_ = std::make_unique<WindowStage>(*window_, panes, kit.size);
    QObject::connect(&first_->view.session, &SessionViewModel::enteredChanged, window_.get(), [this] {
        Perf::shared().startUp("entered");
        closePopups();  // what they show is of the other stage
        stage_->apply(panes_.entered());
    });
    stage_->apply(panes_.entered());
    watchWindow();
}

ShellWindow::~ShellWindow() {
    panes_.perform = {};
    panes_.keysHeld = {};
    panes_.sheet = {};
}

// What keys, buttons and lists do -------------------------------------------------------------------------------------

ActionsViewModel::Hooks ShellWindow::actionHooks() {
    return {[this](bool second) { return context(second); },
            [this] {
                QStringList out;
                for (const std::string& one : recentSymbols(panes_.primary().preferences()))
                    out.push_back(QString::fromStdString(one));
                return out;
            }};
}

ActionContext ShellWindow::context(bool second) const {
    AppModel* dual = panes_.dual();
    return {second && dual ? dual : &panes_.primary(), &panes_, &kit_.windows};
}

int ShellWindow::paneNumber(bool second) const { return second ? panes_.dualNumber() : panes_.primaryNumber(); }

void ShellWindow::watchWindow() {
    panes_.perform = [this](WindowDeed deed, bool second) { return perform(deed, second); };
    panes_.keysHeld = [this] { return window_->property("keysHeld").toBool(); };
    panes_.sheet = [this]() -> std::string {
        const auto name = [](auto value) {
            return QMetaEnum::fromType<decltype(value)>().valueToKey(static_cast<int>(value));
        };
        if (menu_.sheet() == ShellViewModel::Sheet::none) return {};
        return menu_.sheet() == ShellViewModel::Sheet::chartKey ? name(menu_.keyTab()) : name(menu_.sheet());
    };
    filter_ = std::make_unique<HotkeyFilter>(
        *window_,
        HotkeyFilter::Hooks{
            [this](const std::string& chord, bool typing, bool repeated) { return takeKey(chord, typing, repeated); },
            [this](const std::optional<QPointF>& place, bool byHand) { pointerMoved(place, byHand); },
            [&keys = kit_.keys] { keys.focusMovedByKey(); }});
}

void ShellWindow::pointerMoved(const std::optional<QPointF>& place, bool byHand) {
    pointer_ = place;
    if (place && byHand) kit_.keys.pointerMoved();
    tellPointer();
}

// Also before a key: the panes may have come to lie otherwise below a pointer at rest.
void ShellWindow::tellPointer() {
    // the sign-in form has none
    if (panes_.dual() && !divider_) divider_ = window_->findChild<QQuickItem*>(QStringLiteral("divider"));
    const QQuickItem* divider = panes_.dual() ? divider_.get() : nullptr;
    const double x = pointer_ ? pointer_->x() : 0;
    const bool between = divider && x >= divider->x() && x < divider->x() + divider->width();
    const int over = !pointer_ || between ? 0 : paneNumber(divider && x > divider->x());
    for (const int pane : {panes_.primaryNumber(), panes_.dualNumber()})
        if (pane != over) kit_.keys.pointerLeft(pane);
    if (over > 0) kit_.keys.pointerOver(over);
}

// A key of a pane is for the one that the hand is on, in whatever window; the others are for this window.
bool ShellWindow::takeKey(const std::string& chord, bool typing, bool repeated) {
    const Action* action = kit_.keys.actionFor(chord);
    const bool always = action && action->place == ActionPlace::program && isCommandKey(chord);
    if (!action || ((typing || !panes_.entered()) && !always)) return false;
    ActionContext at = context(view_.secondHasHand());
    if (action->place == ActionPlace::pane) {
        if (pointer_) tellPointer();
        std::size_t shown = 0;
        for (const WindowPanes* window : kit_.windows.all()) shown += window->dual() ? 2 : 1;
        const int pane = kit_.keys.paneFor(paneNumber(view_.secondHasHand()), shown);
        WindowPanes* window = kit_.windows.showing(pane);
        if (!window || (window != &panes_ && window->keysHeld && window->keysHeld())) return false;
        at = {pane == window->dualNumber() ? window->dual() : &window->primary(), window, &kit_.windows};
    }
    return repeated || runAction(*action, at).taken;
}

bool ShellWindow::perform(WindowDeed deed, bool second) {
    switch (deed) {
        case WindowDeed::symbolMenu:
            window_->requestActivate();  // the key may have been pressed in another window
            emit view_.symbolMenuAsked(second);
            break;
        case WindowDeed::otherPane:
            emit view_.otherPaneAsked();
            kit_.keys.focusMovedByKey();
            break;
        case WindowDeed::fullScreen:
            stage_->toggleFullScreen();
            break;
        case WindowDeed::picture:
            return takePicture();
        case WindowDeed::actionList:
            emit view_.actionListAsked(second);
            break;
        case WindowDeed::chartKey:
            menu_.showChartKey();
            break;
        case WindowDeed::keySheet:
            menu_.showKeys();
            break;
        case WindowDeed::about:
            menu_.showAbout();
            break;
        case WindowDeed::beep:
            ShellViewModel::beep();
            break;
        case WindowDeed::quit:
            askToEnd();
            break;
    }
    return true;
}

bool ShellWindow::takePicture() {
    view_.setPictureTaken(true);
    const QImage picture = windowPicture(*window_);
    view_.setPictureTaken(false);
    if (picture.isNull()) return false;
    const std::string symbol = panes_.primary().currentSymbol();
    picture_.offer(picture,
                   QStringLiteral("velmora-%1.png").arg(QString::fromStdString(symbol.empty() ? "window" : symbol)));
    return true;
}

// Lists, menus and sheets, whichever they are.
void ShellWindow::closePopups() {
    for (QObject* one : window_->findChildren<QObject*>())
        if (one->inherits("QQuickPopup") && one->property("visible").toBool()) QMetaObject::invokeMethod(one, "close");
}

// The window ----------------------------------------------------------------------------------------------------------

void ShellWindow::setActions() {
    view_.setActions({.moveSplit = [this](double share) { panes_.setSplit(share); },
                      .keepSplit = [this] { panes_.keepSplit(); },
                      .activate = [this](bool second) { panes_.activate(second); },
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
    second_->view.sim.setReset({});
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
    closePopups();
    view_.setEndNotice(notice);
}

}  // namespace vmr
