#include "services/net/ProxyFinder.h"

#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace vmr {

using Answers = std::vector<std::string>;

struct ProxyFinder::Asker {
    std::mutex mutex;
    SerialQueue* queue;  // null once the question has been dropped
    std::span<const std::string_view> schemes;
    Found found;

    Asker(SerialQueue& theQueue, std::span<const std::string_view> theSchemes, Found theFound)
        : queue(&theQueue), schemes(theSchemes), found(std::move(theFound)) {}

    static void tell(const std::shared_ptr<Asker>& asker, const Answers& answers) {
        std::lock_guard lock(asker->mutex);
        if (!asker->queue) return;
        asker->queue->post([asker, proxy = firstUsable(answers, asker->schemes)] {
            if (!asker->queue) return;                        // its own queue's word
            const Found tellProxy = std::move(asker->found);  // may end the question
            tellProxy(proxy);
        });
    }
};

/// Shared with the threads that wait, which may outlive the finder.
struct ProxyFinder::State {
    struct Known {
        double asked = 0;  // monotonic seconds
        Answers answers;
    };
    State(const Clock& theClock, SystemProxyLookup theSystem) : clock(theClock), system(std::move(theSystem)) {}

    void waitFor(const std::string& origin, double asked) {
        Known known{asked, system(origin)};
        std::vector<std::shared_ptr<Asker>> told;
        {
            std::lock_guard lock(mutex);
            told = std::move(waiting.extract(origin).mapped());
            answered[origin] = known;
        }
        for (const auto& asker : told) Asker::tell(asker, known.answers);
    }

    const Clock& clock;  // not for the threads
    const SystemProxyLookup system;
    std::mutex mutex;  // guards the rest
    std::map<std::string, Known> answered;
    std::map<std::string, std::vector<std::shared_ptr<Asker>>> waiting;
};

ProxyFinder::Question& ProxyFinder::Question::operator=(Question&& other) noexcept {
    if (this != &other) {
        drop();
        asker_ = std::move(other.asker_);
    }
    return *this;
}

void ProxyFinder::Question::drop() {
    if (!asker_) return;
    const auto asker = std::move(asker_);
    const Found unheard = std::move(asker->found);
    std::lock_guard lock(asker->mutex);
    asker->queue = nullptr;
}

ProxyFinder::ProxyFinder(const Clock& clock, SystemProxyLookup system)
    : state_(std::make_shared<State>(clock, std::move(system))) {}

ProxyFinder::Question ProxyFinder::find(const Url& target, std::span<const std::string_view> schemes,
                                        SerialQueue& queue, Found found) {
    if (!state_ || !systemDecides(target, environment)) {
        found(proxyFor(target, environment));
        return {};
    }
    const std::string origin = originOf(target);
    const double now = state_->clock.monotonic();
    std::unique_lock lock(state_->mutex);
    if (const auto known = state_->answered.find(origin);
        known != state_->answered.end() && now < known->second.asked + holdsSeconds) {
        const auto proxy = firstUsable(known->second.answers, schemes);
        lock.unlock();
        found(proxy);
        return {};
    }
    auto asker = std::make_shared<Asker>(queue, schemes, std::move(found));
    const bool first = state_->waiting[origin].empty();
    state_->waiting[origin].push_back(asker);
    if (first) std::thread([state = state_, origin, now] { state->waitFor(origin, now); }).detach();
    return Question(std::move(asker));
}

}  // namespace vmr
