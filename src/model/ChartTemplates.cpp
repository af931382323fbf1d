#include "model/ChartTemplates.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "base/LocalDay.h"
#include "market/ClockSetting.h"

namespace vmr {

namespace {
constexpr const char* leftText = "The chart was left.";
constexpr const char* signedOutText = "Signed out.";
constexpr const char* closedText = "The pane was closed.";
}  // namespace

ChartTemplates::ChartTemplates(FirebaseRESTAuth& auth, const PaneWork& work, Pane pane, NoticeGate* gate)
    : list(gate),
      busy(gate, false),
      loading(gate, false),
      status(gate),
      failed(gate, false),
      auth_(auth),
      work_(work),
      pane_(std::move(pane)) {}

void ChartTemplates::follow() {
    std::string pair = pane_.symbolSource();
    const bool signedIn = pane_.isSignedIn();
    if (pair == pair_ && signedIn == signedIn_) return;
    pair_ = std::move(pair);
    const bool signedOut = std::exchange(signedIn_, signedIn) && !signedIn;
    leave(signedOut ? signedOutText : leftText);
    if (shown_ && signedIn_) ask();
}

// Who waited is told last, when everything is as it will be.
void ChartTemplates::leave(const char* why) {
    ofStay_.cancel();
    ofRefresh_.cancel();
    waiting_.reset();
    list = std::nullopt;
    busy = false;
    loading = false;
    say(std::nullopt, false);
    giveUp(why);
}

void ChartTemplates::giveUp(const char* why) {
    auto waiting = std::exchange(refreshed_, {});
    waiting.push_back(std::exchange(saved_, {}));
    for (const Done& done : waiting)
        if (done) done(why);
}

void ChartTemplates::end() {
    ofStay_.end();
    ofRefresh_.end();
    giveUp(closedText);
}

// A choice of another source changes the pair twice in one turn, and one list is enough.
void ChartTemplates::ask() {
    work_.main().post(ofStay_([this] { refresh(); }));
}

void ChartTemplates::setShown(bool shown) {
    if (!std::exchange(shown_, shown) && shown) refresh();
}

void ChartTemplates::say(const std::optional<std::string>& text, bool failure) {
    failed = failure;
    status = text;
}

void ChartTemplates::refresh(Done done) {
    follow();
    if (pair_.empty()) {
        if (done) done("No chart is open.");
        return;
    }
    if (done) refreshed_.push_back(std::move(done));
    say(std::nullopt, false);
    loading = true;
    ofRefresh_.cancel();
    TemplatesService::load(pair_, auth_, ofRefresh_([this](std::variant<List, std::string> answer) {
                               if (auto* told = std::get_if<List>(&answer)) {
                                   list = std::move(*told);
                                   return finishRefresh(std::nullopt);
                               }
                               say(std::get<std::string>(answer), true);
                               finishRefresh(std::get<std::string>(answer));
                           }));
}

void ChartTemplates::finishRefresh(const std::optional<std::string>& problem) {
    loading = false;
    for (const Done& done : std::exchange(refreshed_, {})) done(problem);
}

void ChartTemplates::load(const std::string& key) {
    follow();
    if (busy || !list.get()) return;
    const auto slot = list.get()->savedSlots.find(key);
    if (slot == list.get()->savedSlots.end()) return;
    busy = true;
    const JsonMembers saved = slot->second.config;
    pane_.apply(saved, true);
    busy = false;
    say("Applied slot " + digit(key) + ".", false);
}

void ChartTemplates::save(const std::string& key, Done done) {
    follow();
    if (busy || pair_.empty()) {
        if (done) done(busy ? "A save is under way." : "No chart is open.");
        return;
    }
    busy = true;
    saved_ = std::move(done);
    TemplatesService::save(pair_, key, pane_.capture(), std::max(pane_.barsShown(), 0.0), auth_,
                           ofStay_([this, key](const std::variant<Json, std::string>& answer) {
                               busy = false;
                               const auto* problem = std::get_if<std::string>(&answer);
                               if (!problem) refresh();
                               if (problem)
                                   say(*problem, true);
                               else if (!failed)
                                   say("Saved to slot " + digit(key) + " (now preferred).", false);
                               const Done saved = std::exchange(saved_, {});
                               if (saved) saved(problem ? std::optional(*problem) : std::nullopt);
                           }));
}

void ChartTemplates::autoApplyPreferred() {
    follow();
    if (pair_.empty() || !signedIn_ || !preferredApplied_.insert(pair_).second) return;
    TemplatesService::load(pair_, auth_, ofStay_([this](const std::variant<List, std::string>& answer) {
                               const auto* told = std::get_if<List>(&answer);
                               if (!told || !told->preferred) return;
                               const auto slot = told->savedSlots.find(*told->preferred);
                               if (slot == told->savedSlots.end()) return;
                               const std::string line =
                                   "→ template: applied preferred " + slot->first + " for " + pair_;
                               pane_.apply(slot->second.config, false);
                               pane_.log(line);
                           }));
}

void ChartTemplates::keepView(const std::optional<ViewSetup>& view) {
    waiting_ = view ? std::optional(WaitingView{*view, pane_.handAt(), pane_.timeframe()}) : std::nullopt;
}

std::optional<ViewSetup> ChartTemplates::waitingView() {
    if (waiting_ && (pane_.handAt() > waiting_->handAt || pane_.timeframe() != waiting_->timeframe)) waiting_.reset();
    return waiting_ ? std::optional(waiting_->view) : std::nullopt;
}

std::optional<ViewSetup> ChartTemplates::takeView(std::size_t bars) {
    const auto view = bars >= enoughBars ? waitingView() : std::nullopt;
    if (view) waiting_.reset();
    return view;
}

std::string ChartTemplates::fmtDate(const std::string& text) {
    // a moment of the clock setting may leave out more
    constexpr std::size_t date = 10, minutes = 16, seconds = 19;
    if (text.size() <= seconds || text[date] != 'T' || text[minutes] != ':') return {};
    if (text.find_first_of("Z+-", seconds) == text.npos) return {};
    const auto moment = parseMoment(text);
    const auto local = moment ? localTime(*moment) : std::nullopt;
    if (!local) return {};
    return fmt::format("saved {}/{} {:02}:{:02}", local->month, local->day, local->hour, local->minute);
}

}  // namespace vmr
