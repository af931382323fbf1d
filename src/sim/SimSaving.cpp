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

void SimEngine::load() {
    if (!setup_.store) return;
    if (auto account = setup_.store->load()) {
        account_ = std::move(*account);
        commission = account_.commission;
    } else if (setup_.store->foundUnreadable()) {
        log("simulator: " + setup_.store->file().string() +
            " cannot be read; the account starts anew, and the file is kept beside it");
    }
    if (!keepsAccount()) log("simulator: another Velmora holds this account; what is traded here will not be saved");
}

void SimEngine::persist() {
    ++revision_;
    if (!keepsAccount() || persistPending_) return;
    persistPending_ = true;
    setup_.main->after(saveDelay, [this, alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) save();
    });
}

// Copies the account on the main thread; the other queue encodes and writes the copy.
void SimEngine::save() {
    persistPending_ = false;
    setup_.files->post([this, alive = std::weak_ptr(alive_), store = setup_.store, main = setup_.main,
                        account = std::make_shared<const sim::Snapshot>(snapshot()), revision = revision_] {
        const auto problem = store->save(*account, revision);
        main->post([this, alive, revision, problem] {
            if (!alive.expired()) saved(revision, problem);
        });
    });
}

void SimEngine::saved(std::uint64_t revision, const std::optional<std::string>& problem) {
    const bool failed = problem && revision > savedRevision_;  // a newer revision may have been saved meanwhile
    if (retry_ != SerialQueue::noTimer) setup_.main->cancel(std::exchange(retry_, SerialQueue::noTimer));
    if (failed) {
        if (!saveFails_) log("simulator: the account is not saved, trying again every 5 s: " + *problem);
        retry_ = setup_.main->after(retryDelay, [this, alive = std::weak_ptr(alive_)] {
            if (!alive.expired()) save();
        });
    } else {
        if (saveFails_) log("simulator: the account is saved again");
        savedRevision_ = std::max(savedRevision_, revision);
    }
    saveFails_ = failed;
}

bool SimEngine::flushPendingSave() {
    if (!keepsAccount() || revision_ == savedRevision_) return true;
    const auto problem = setup_.store->save(snapshot(), revision_);
    saved(revision_, problem);
    return !problem;
}

}  // namespace vmr
