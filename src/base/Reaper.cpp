#include "base/Reaper.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace vmr {

namespace {
// Outlives the reaper, for what is dropped by a later static destructor.
std::atomic<bool>& reaperIsGone() {
    static std::atomic<bool> gone{false};
    return gone;
}

class Reaper {
 public:
    Reaper() : thread_([this] { run(); }) {}

    ~Reaper() {
        {
            std::lock_guard lock(mutex_);
            ending_ = true;
        }
        wake_.notify_one();
        thread_.join();
        reaperIsGone() = true;
    }

    void add(std::function<void()> release) {
        {
            std::lock_guard lock(mutex_);
            waiting_.push_back(std::move(release));
        }
        wake_.notify_one();
    }

 private:
    void run() {
        std::unique_lock lock(mutex_);
        while (!ending_ || !waiting_.empty()) {
            wake_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
            while (!waiting_.empty()) {
                auto release = std::move(waiting_.front());
                waiting_.pop_front();
                lock.unlock();
                release();
                release = nullptr;
                lock.lock();
            }
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> waiting_;
    bool ending_ = false;
    std::thread thread_;
};
}  // namespace

void freeLater(std::function<void()> release) {
    if (reaperIsGone()) return release();
    static Reaper reaper;
    reaper.add(std::move(release));
}

}  // namespace vmr
