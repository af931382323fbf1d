#include "workspace/WorkspaceStore.h"

#include <algorithm>
#include <utility>

#include "market/Roots.h"
#include "model/AppModel.h"

namespace vmr {

namespace {
constexpr const char* symbolOfNone = "NQ";

// Whether the channel is a chart that the next run will know how to open.
bool isKnownChart(const std::string& channel) {
    constexpr std::string_view stocks = "stocks:";
    return channel.starts_with(stocks) ? channel.size() > stocks.size() : !futuresRoot(channel).empty();
}

// A pane that has not opened its chart yet, because its connection is slow or refused, is still to show what it
// claimed.
PaneState stateOf(const PaneFacts& pane, const std::optional<PaneState>& claimed) {
    if (pane.chartChannel.empty() && claimed) return *claimed;
    PaneState state = pane.state;
    if (state.symbol.empty()) state.symbol = symbolOfNone;
    return state;
}

double leftOf(const WindowRecord& record) { return record.frame.empty() ? 0 : record.frame.front(); }
}  // namespace

PaneFacts paneFacts(const AppModel& pane) {
    return {pane.session.isSignedIn,
            pane.channels->chartChannel,
            {pane.currentSymbol(), pane.bars.timeframe, pane.config->gexSource}};
}

WorkspaceStore::WorkspaceStore(Preferences& preferences, MainLoop& main) : preferences_(preferences), main_(main) {
    const auto stored = preferences_.get(key);
    records_ = (stored ? parseWorkspace(*stored) : std::nullopt).value_or(std::vector<WindowRecord>());
    current_ = records_;
}

WorkspaceStore::~WorkspaceStore() {
    if (timer_ != SerialQueue::noTimer) main_.cancel(timer_);
}

std::optional<WindowRecord> WorkspaceStore::nextRecord() const {
    return claimIdx_ < records_.size() ? std::optional(records_[claimIdx_]) : std::nullopt;
}

std::optional<WindowRecord> WorkspaceStore::claimNext() {
    auto next = nextRecord();
    if (next) ++claimIdx_;
    return next;
}

void WorkspaceStore::startOver() {
    records_ = current_;
    claimIdx_ = 0;
    didSpawn_ = false;
    replaced_ = false;
}

void WorkspaceStore::replace(std::vector<WindowRecord> records) {
    current_ = std::move(records);
    replaced_ = true;
    persist();
}

bool WorkspaceStore::takeSpawn() { return !std::exchange(didSpawn_, true); }

void WorkspaceStore::registerBox(std::shared_ptr<WorkspaceWindowBox> box) {
    remove(box->id);
    boxes_.push_back(std::move(box));
    if (timer_ == SerialQueue::noTimer) timer_ = main_.every(period, period, [this] { collectAndSave(); });
}

void WorkspaceStore::remove(const Uuid& id) {
    std::erase_if(boxes_, [&id](const auto& box) { return box->id == id; });
}

std::optional<WindowRecord> WorkspaceStore::recordOf(const WorkspaceWindowBox& box) {
    const auto primary = box.primary();
    if (!primary || !primary->isSignedIn) return std::nullopt;
    const auto claimed = box.rec ? std::optional(box.rec->primary) : std::nullopt;
    const bool awaited = primary->chartChannel.empty() && claimed;
    if (!awaited && !isKnownChart(primary->chartChannel)) return std::nullopt;
    const auto frame = box.frame();
    if (!frame) return std::nullopt;
    WindowRecord record{{frame->begin(), frame->end()}, {}, stateOf(*primary, claimed), {}};
    if (const auto dual = box.dual ? box.dual() : std::nullopt) {
        record.split = box.split;
        record.dual = stateOf(*dual, box.rec ? box.rec->dual : std::nullopt);
    }
    return record;
}

void WorkspaceStore::collectAndSave() {
    if (replaced_) return;
    std::vector<WindowRecord> seen;
    for (const auto& box : boxes_)
        if (auto record = recordOf(*box)) seen.push_back(std::move(*record));
    if (seen.empty()) return;
    std::stable_sort(seen.begin(), seen.end(),
                     [](const WindowRecord& a, const WindowRecord& b) { return leftOf(a) < leftOf(b); });
    current_ = std::move(seen);
    persist();
}

void WorkspaceStore::persist() {
    auto text = workspaceText(current_);
    if (!text || text == lastWritten_) return;
    preferences_.set(key, *text);
    lastWritten_ = std::move(text);
}

void WorkspaceStore::saveAtEnd() {
    if (boxes_.empty())
        persist();
    else
        collectAndSave();
}

}  // namespace vmr
