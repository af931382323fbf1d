#include "workspace/ShellWindows.h"

#include <algorithm>
#include <utility>

#include "base/NumberText.h"
#include "chart/ChartMarks.h"
#include "workspace/ActionTable.h"
#include "workspace/GestureTable.h"

namespace vmr {

namespace {
constexpr double evenSplit = 0.5;

bool usableSplit(double share) { return share > 0 && share < 1; }

double storedSplit(const Preferences& preferences) {
    const auto stored = preferences.get(ShellWindows::splitKey);
    const double share = stored ? parseDouble(*stored).value_or(0) : 0;
    return usableSplit(share) ? share : evenSplit;
}

// What the key to the chart shows.
std::vector<std::string> namesOn(std::string_view sheet) {
    std::vector<std::string> out;
    if (sheet == "marks")
        for (const ChartMark& mark : chartMarks()) out.emplace_back(mark.name);
    if (sheet == "keys")
        for (const Action& action : actionTable()) out.push_back(action.title);
    if (sheet == "gestures")
        for (const Gesture& gesture : gestureTable()) out.emplace_back(gesture.gesture);
    return out;
}
}  // namespace

// One window ----------------------------------------------------------------------------------------------------------

WindowPanes::WindowPanes(ShellWindows& windows, int number, int primary)
    : windows_(windows),
      number_(number),
      primaryNumber_(primary),
      primary_(windows.panes_.find(primary)),
      split_(storedSplit(windows.preferences_)),
      link_(windows.main_) {
    windows_.panes_.setShown(primary, true);
    box_->id = windows_.ids_.next();
    box_->primary = [this] { return std::optional(paneFacts(*primary_)); };
    box_->dual = [this] { return dual_ ? std::optional(paneFacts(*dual_)) : std::nullopt; };
    box_->frame = [this] { return frameToKeep ? frameToKeep() : frame ? frame() : std::nullopt; };
    box_->split = split_;
    linkChanged_ = link_.changed.connect([this] { changed(); });
    // the pane is in the middle of its change
    entering_ = primary_->session.isSignedIn.changed.connect(
        [this] { windows_.main_.post(whileThere_([this] { enteredChanged(); })); });
}

WindowPanes::~WindowPanes() { windows_.store_.remove(box_->id); }

void WindowPanes::claim() {
    if (std::exchange(box_->claimed, true)) return;
    box_->rec = windows_.store_.claimNext();
    frameTaken_ = false;
    showDue_ = box_->rec.has_value();
    dualDue_ = box_->rec && box_->rec->dual;
    if (box_->rec && box_->rec->split) setSplit(*box_->rec->split);
}

void WindowPanes::enteredChanged() {
    if (!entered()) return windows_.sessionOver(*this);
    windows_.sessionStands_ = true;
    if (std::exchange(showDue_, false)) primary_->applyRestore(box_->rec->primary);
    if (std::exchange(dualDue_, false) && !dual_ && windows_.panes_.hasRoom()) openDual(box_->rec->dual);
    windows_.spawnRest();
}

std::optional<std::vector<double>> WindowPanes::takeFrame() {
    if (!box_->rec || std::exchange(frameTaken_, true)) return std::nullopt;
    return box_->rec->frame;
}

void WindowPanes::setSplit(double share) {
    if (!usableSplit(share) || share == split_) return;
    split_ = box_->split = share;
    changed();
}

void WindowPanes::keepSplit() { windows_.preferences_.set(ShellWindows::splitKey, doubleText(split_)); }

bool WindowPanes::toggleDual() {
    if (dual_) {
        closeDual();
        return true;
    }
    if (!windows_.panes_.hasRoom()) {
        primary_->session.flashConnLimited();
        return false;
    }
    openDual(std::nullopt);
    return true;
}

void WindowPanes::activate(bool second) { windows_.panes_.setActive(second && dual_ ? dualNumber_ : primaryNumber_); }

void WindowPanes::toggleSync(bool fromSecond) { link_.toggleSync(fromSecond ? dual_ : primary_); }

void WindowPanes::openDual(std::optional<PaneState> restore) {
    dualNumber_ = windows_.panes_.open(std::move(restore)).value();
    dual_ = windows_.panes_.find(dualNumber_);
    windows_.panes_.setShown(dualNumber_, true);
    dual_->presence.setTabId(primary_->presence.tabId() + "d");
    for (AppModel* pane : {primary_, dual_}) pane->presence.setPageKind(PresenceReporter::dual);
    link_.link(*primary_, *dual_);
    changed();
}

void WindowPanes::closeDual() {
    link_.unlink();
    AppModel& pane = *std::exchange(dual_, nullptr);
    const int number = std::exchange(dualNumber_, 0);
    if (windows_.panes_.activeNumber() == number) activate(false);
    changed();
    if (windows_.onPaneClosing) windows_.onPaneClosing(*this, pane);
    windows_.panes_.setShown(number, false);
    windows_.panes_.close(number);
    primary_->presence.setPageKind(PresenceReporter::single);
}

WindowFacts WindowPanes::facts() const {
    WindowFacts out;
    out.number = number_;
    if (frame) out.frame = frame();
    out.split = split_;
    out.panes = {primaryNumber_};
    out.dual = dual_ != nullptr;
    out.sync = link_.syncOn();
    if (dual_) out.panes.push_back(dualNumber_);
    for (const AppModel* pane : {static_cast<const AppModel*>(primary_), static_cast<const AppModel*>(dual_)}) {
        if (!pane) continue;
        const auto add = [&out](const Observable<bool>& open, const char* name) {
            if (open) out.panels.emplace_back(name);
        };
        add(pane->panels.configPanelOpen, "config");
        add(pane->panels.accountPanelOpen, "account");
        add(pane->panels.templatesPanelOpen, "templates");
        add(pane->panels.simPanelOpen, "sim");
    }
    if (sheet) out.sheet = sheet();
    out.sheetNames = namesOn(out.sheet);
    return out;
}

// All windows ---------------------------------------------------------------------------------------------------------

ShellWindows::ShellWindows(PaneHost& panes, WorkspaceStore& store, Preferences& preferences, MainLoop& main)
    : panes_(panes), store_(store), preferences_(preferences), main_(main) {}

ShellWindows::~ShellWindows() = default;

WindowPanes& ShellWindows::add(int pane) {
    windows_.push_back(std::make_unique<WindowPanes>(*this, ++lastNumber_, pane));
    WindowPanes& window = *windows_.back();
    window.claim();
    store_.registerBox(window.box_);
    return window;
}

WindowPanes& ShellWindows::openFirst(bool hasFirstSymbol) {
    WindowPanes& window = add(panes_.activeNumber());
    window.showDue_ = false;
    if (window.record() && !hasFirstSymbol) window.primary().applyRestore(window.record()->primary);
    if (onOpened) onOpened(window);
    if (window.entered()) main_.post(window.whileThere_([&window] { window.enteredChanged(); }));
    return window;
}

WindowPanes* ShellWindows::open(WindowPanes* from) {
    if (!panes_.hasRoom()) {
        if (!from) from = showing(panes_.activeNumber());
        if (!from && !windows_.empty()) from = windows_.front().get();
        if (from) from->primary().session.flashConnLimited();
        return nullptr;
    }
    const auto next = store_.nextRecord();
    WindowPanes& window = add(panes_.open(next ? std::optional(next->primary) : std::nullopt).value());
    window.showDue_ = false;
    panes_.setActive(window.primaryNumber());
    if (onOpened) onOpened(window);
    return &window;
}

// The windows of the last run that are left. One too many for the service is refused by it, in its own pane.
void ShellWindows::spawnRest() {
    if (!store_.takeSpawn()) return;
    while (const auto next = store_.nextRecord()) {
        WindowPanes& window = add(panes_.openBeyondLimit(next->primary));
        window.showDue_ = false;
        if (onOpened) onOpened(window);
        window.enteredChanged();
    }
}

void ShellWindows::close(int number) {
    WindowPanes* window = find(number);
    if (!window || windows_.size() == 1) return;
    if (window->dual_) window->closeDual();
    if (onPaneClosing) onPaneClosing(*window, window->primary());
    if (onClosing) onClosing(*window);
    const int pane = window->primaryNumber();
    std::erase_if(windows_, [window](const auto& one) { return one.get() == window; });
    panes_.setShown(pane, false);
    panes_.close(pane);
}

void ShellWindows::signOut(int number) {
    WindowPanes* stays = find(number);
    if (!stays) return;
    store_.collectAndSave();
    stays->primary().signOut();
    sessionOver(*stays);
}

// A form in each window would be noise.
void ShellWindows::sessionOver(WindowPanes& stays) {
    if (!std::exchange(sessionStands_, false)) return;
    store_.startOver();
    if (stays.dual_) stays.closeDual();
    for (WindowPanes* window : all())
        if (window != &stays) close(window->number());
    stays.box_->claimed = false;
    stays.claim();
}

WindowPanes* ShellWindows::find(int number) {
    const auto found =
        std::find_if(windows_.begin(), windows_.end(), [number](const auto& one) { return one->number() == number; });
    return found == windows_.end() ? nullptr : found->get();
}

WindowPanes* ShellWindows::showing(int pane) {
    const auto found = std::find_if(windows_.begin(), windows_.end(), [pane](const auto& one) {
        return one->primaryNumber() == pane || (one->dualNumber() == pane && one->dual());
    });
    return found == windows_.end() ? nullptr : found->get();
}

std::vector<WindowPanes*> ShellWindows::all() {
    std::vector<WindowPanes*> out;
    for (const auto& window : windows_) out.push_back(window.get());
    return out;
}

std::vector<WindowFacts> ShellWindows::facts() const {
    std::vector<WindowFacts> out;
    for (const auto& window : windows_) out.push_back(window->facts());
    return out;
}

}  // namespace vmr
