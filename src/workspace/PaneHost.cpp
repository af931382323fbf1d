#include "workspace/PaneHost.h"

#include <algorithm>

#include "sim/SimEngine.h"

namespace vmr {

namespace {
constexpr double lookPeriod = 0.05;  // seconds
constexpr int longestLooks = static_cast<int>(PaneHost::longestEnd / lookPeriod);
}  // namespace

PaneHost::PaneHost(PaneSurroundings surroundings, Connect connect)
    : surroundings_(std::move(surroundings)), connect_(std::move(connect)) {
    steered_ = surroundings_.clock.onSteered(surroundings_.main, [this](const ClockSteering& steering) {
        if (!steering.wentBack()) return;
        if (surroundings_.sim) surroundings_.sim->forgetPrices();
        for (Pane& pane : panes_) pane.model->reloadChart();
    });
}

PaneHost::~PaneHost() {
    if (endingTimer_ != SerialQueue::noTimer) surroundings_.main.cancel(endingTimer_);
    for (Pane& pane : panes_) pane.model.reset();
    // all at once, so that they share the time that each may take
    for (Pane& pane : panes_) pane.thread->finish();
}

std::optional<int> PaneHost::open(std::optional<PaneState> restore) {
    return hasRoom() ? std::optional(openBeyondLimit(std::move(restore))) : std::nullopt;
}

int PaneHost::openBeyondLimit(std::optional<PaneState> restore) {
    Pane& pane = panes_.emplace_back();
    pane.number = ++lastNumber_;
    pane.thread = std::make_unique<AsioThread>("velmora.relay");
    PaneSurroundings surroundings = surroundings_;
    surroundings.makeRelay = [this, thread = pane.thread.get()] { return connect_(thread->loop()); };
    pane.model = std::make_unique<AppModel>(std::move(surroundings), std::move(restore));
    pane.signedIn =
        pane.model->session.isSignedIn.changed.connect([this, number = pane.number, model = pane.model.get()] {
            // the pane is in the middle of its change
            surroundings_.main.post(
                whileThere_([this, number, now = model->session.isSignedIn.get()] { followSession(number, now); }));
        });
    if (active_ == 0) active_ = pane.number;
    sizeChanged();
    return pane.number;
}

void PaneHost::followSession(int number, bool signedIn) {
    const AppModel* first = find(number);
    if (!first || first->session.isSignedIn != signedIn) return;
    for (Pane& pane : panes_) {
        if (pane.model->session.isSignedIn == signedIn) continue;
        if (signedIn)
            pane.model->startStoredSession();
        else
            pane.model->signOut();
    }
}

std::list<PaneHost::Pane>::iterator PaneHost::at(int number) {
    return std::find_if(panes_.begin(), panes_.end(), [number](const Pane& pane) { return pane.number == number; });
}

AppModel* PaneHost::find(int number) {
    const auto pane = at(number);
    return pane == panes_.end() ? nullptr : pane->model.get();
}

std::optional<std::string> PaneHost::close(int number) {
    const auto pane = at(number);
    if (pane == panes_.end()) return "there is no pane " + std::to_string(number);
    if (pane->shown) return "a window shows pane " + std::to_string(number);
    pane->model.reset();
    endThread(std::move(pane->thread));
    panes_.erase(pane);
    if (number == active_) active_ = panes_.empty() ? 0 : panes_.front().number;
    sizeChanged();
    return std::nullopt;
}

// The thread is given back as soon as its socket has said good-bye; the main loop never waits for that.
void PaneHost::endThread(std::unique_ptr<AsioThread> thread) {
    thread->finish();
    ending_.push_back({std::move(thread), 0});
    if (endingTimer_ == SerialQueue::noTimer)
        endingTimer_ = surroundings_.main.every(lookPeriod, lookPeriod, [this] { clearEndedThreads(); });
}

void PaneHost::clearEndedThreads() {
    for (EndingThread& one : ending_)
        if (++one.looks == longestLooks) one.thread->quit();
    std::erase_if(ending_, [](const EndingThread& one) { return one.thread->ended(); });
    if (!ending_.empty()) return;
    surroundings_.main.cancel(endingTimer_);
    endingTimer_ = SerialQueue::noTimer;
}

void PaneHost::setShown(int number, bool shown) {
    if (const auto pane = at(number); pane != panes_.end()) pane->shown = shown;
}

std::vector<int> PaneHost::numbers() const {
    std::vector<int> numbers;
    for (const Pane& pane : panes_) numbers.push_back(pane.number);
    return numbers;
}

std::vector<const AppModel*> PaneHost::models() const {
    std::vector<const AppModel*> models;
    for (const Pane& pane : panes_) models.push_back(pane.model.get());
    return models;
}

void PaneHost::setActive(int number) {
    if (find(number)) active_ = number;
}

}  // namespace vmr
