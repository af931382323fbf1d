#include <algorithm>
#include <utility>

#include "sim/SimEngine.h"
#include "sim/SimStore.h"

namespace vmr {

void SimEngine::log(const std::string& line) const {
    if (setup_.log) setup_.log(line);
}

bool SimEngine::keepsAccount() const { return setup_.store && !setup_.store->isHeldElsewhere(); }

sim::Snapshot SimEngine::snapshot() const {
    sim::Snapshot copy = account_;
    copy.commission = commission;
    return copy;
}

std::optional<std::string> SimEngine::problem() const {
    if (setup_.store && !keepsAccount()) return "Paper account read only: another Velmora has it";
    if (keeping_.failure) return "Paper account not saved: " + *keeping_.failure;
    if (keeping_.setAside)
        return "Paper account set aside: " + setup_.store->file().string() + " cannot be read, so a new one has begun";
    return std::nullopt;
}

void SimEngine::noteError(const std::string& line) {
    keeping_.lastError = line;
    log("simulator: " + line);
}

void SimEngine::load() {
    if (!setup_.store) return;
    if (auto account = setup_.store->load()) {
        account_ = std::move(*account);
        commission = account_.commission;
    }
    keeping_.setAside = setup_.store->foundUnreadable();
    if (keeping_.setAside)
        noteError(setup_.store->file().string() +
                  " cannot be read; the account starts anew, and the file is kept beside it");
    if (keepsAccount()) return;
    noteError("another Velmora holds this account; what is traded here will not be saved");
    keeping_.look = setup_.main->every(lookPeriod, lookPeriod, [this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) takeOver();
    });
}

// The commission is the settings', and stays.
void SimEngine::takeOver() {
    if (!setup_.store->takeLock()) return;
    setup_.main->cancel(std::exchange(keeping_.look, SerialQueue::noTimer));
    const double mine = commission;
    account_ = {};
    load();
    commission = mine;
    keeping_.savedRevision = keeping_.revision;
    log("simulator: the other Velmora has ended; this one keeps the account from now on, as that one left it; what was "
        "traded here meanwhile is gone");
    accountReplaced();
    changed(Field::keeping);
}

void SimEngine::persist() {
    ++keeping_.revision;
    if (!keepsAccount() || keeping_.pending) return;
    keeping_.pending = true;
    setup_.main->after(saveDelay, [this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) save();
    });
}

// How far a trade has run matters less than a save a second, for as long as it runs.
void SimEngine::persistLater() {
    ++keeping_.revision;
    if (!keepsAccount() || keeping_.pending || keeping_.later) return;
    keeping_.later = true;
    setup_.main->after(excursionDelay, [this, alive = std::weak_ptr(alive_)] {
        if (alive.expired()) return;
        keeping_.later = false;
        if (keeping_.revision > keeping_.savedRevision && !keeping_.pending) save();
    });
}

// Copies the account on the main thread; the other queue encodes and writes the copy.
void SimEngine::save() {
    keeping_.pending = false;
    setup_.files->post([this, alive = std::weak_ptr(alive_), store = setup_.store, main = setup_.main,
                        account = std::make_shared<const sim::Snapshot>(snapshot()), revision = keeping_.revision] {
        const auto problem = store->save(*account, revision);
        main->post([this, alive, revision, problem] {
            if (!alive.expired()) saved(revision, problem);
        });
    });
}

void SimEngine::saved(std::uint64_t revision, const std::optional<std::string>& failure) {
    const bool failed = failure && revision > keeping_.savedRevision;  // a newer one may have been saved meanwhile
    if (keeping_.retry != SerialQueue::noTimer)
        setup_.main->cancel(std::exchange(keeping_.retry, SerialQueue::noTimer));
    const auto before = std::exchange(keeping_.failure, failed ? failure : std::nullopt);
    if (failed) {
        keeping_.lastError = "the account is not saved: " + *failure;
        if (!before) log("simulator: the account is not saved, trying again every 5 s: " + *failure);
        keeping_.retry = setup_.main->after(retryDelay, [this, alive = std::weak_ptr(alive_)] {
            if (!alive.expired()) save();
        });
    } else {
        if (before) log("simulator: the account is saved again");
        keeping_.savedRevision = std::max(keeping_.savedRevision, revision);
        keeping_.setAside = false;
        keeping_.savedAt = now();
    }
    changed(Field::keeping);
}

bool SimEngine::flushPendingSave() {
    if (!keepsAccount() || keeping_.revision == keeping_.savedRevision) return true;
    const auto problem = setup_.store->save(snapshot(), keeping_.revision);
    saved(keeping_.revision, problem);
    return !problem;
}

}  // namespace vmr
