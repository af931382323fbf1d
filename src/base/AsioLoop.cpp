#include "base/AsioLoop.h"

#include <algorithm>
#include <atomic>
#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <mutex>
#include <unordered_map>
#ifdef __linux__
#include <pthread.h>
#endif

namespace vmr {

namespace asio = boost::asio;
using SteadyTime = std::chrono::steady_clock;

namespace {
constexpr double resolverPatience = 0.1;

SteadyTime::duration seconds(double value) {
    return std::chrono::duration_cast<SteadyTime::duration>(std::chrono::duration<double>(std::clamp(value, 0.0, 1e8)));
}
}  // namespace

struct AsioLoop::Impl : std::enable_shared_from_this<AsioLoop::Impl> {
    struct Timer {
        explicit Timer(asio::io_context& context) : steady(context) {}
        asio::steady_timer steady;
        Task task;
        double period = 0;
    };

    asio::io_context context{1};
    asio::executor_work_guard<asio::io_context::executor_type> work{context.get_executor()};
    std::atomic<std::thread::id> runner{};
    std::mutex mutex;  // guards the two below
    std::unordered_map<TimerId, std::shared_ptr<Timer>> timers;
    TimerId lastId = noTimer;

    TimerId add(double first, double period, Task task) {
        auto timer = std::make_shared<Timer>(context);
        timer->task = std::move(task);
        timer->period = period;
        TimerId id = noTimer;
        {
            std::lock_guard lock(mutex);
            id = ++lastId;
            timers.emplace(id, timer);
        }
        const auto due = SteadyTime::now() + seconds(first);
        asio::post(context, [weak = weak_from_this(), id, due] {
            if (auto self = weak.lock()) self->arm(id, due);
        });
        return id;
    }

    std::shared_ptr<Timer> find(TimerId id) {
        std::lock_guard lock(mutex);
        const auto found = timers.find(id);
        return found == timers.end() ? nullptr : found->second;
    }

    void arm(TimerId id, SteadyTime::time_point due) {
        auto timer = find(id);
        if (!timer) return;
        timer->steady.expires_at(due);
        timer->steady.async_wait([weak = weak_from_this(), id, due](const boost::system::error_code&) {
            if (auto self = weak.lock()) self->fire(id, due);
        });
    }

    void fire(TimerId id, SteadyTime::time_point due) {
        auto timer = find(id);
        if (!timer) return;
        if (timer->period > 0) {
            timer->task();
            // a late turn must not be followed by a burst of missed ones
            arm(id, std::max(due + seconds(timer->period), SteadyTime::now()));
            return;
        }
        {
            std::lock_guard lock(mutex);
            timers.erase(id);
        }
        timer->task();
    }

    void cancel(TimerId id) {
        std::shared_ptr<Timer> timer;
        {
            std::lock_guard lock(mutex);
            const auto found = timers.find(id);
            if (found == timers.end()) return;
            timer = std::move(found->second);
            timers.erase(found);
        }
        asio::post(context, [timer] { timer->steady.cancel(); });
    }

    void endTimers() {
        std::unordered_map<TimerId, std::shared_ptr<Timer>> ended;  // what a task holds may cancel timers as it goes
        {
            std::lock_guard lock(mutex);
            ended.swap(timers);
        }
        for (auto& [id, timer] : ended) timer->steady.cancel();
    }
};

AsioLoop::AsioLoop() : impl_(std::make_shared<Impl>()) {}

AsioLoop::~AsioLoop() {
    impl_->context.stop();
    impl_->endTimers();
}

void AsioLoop::post(Task task) { asio::post(impl_->context, std::move(task)); }

SerialQueue::TimerId AsioLoop::after(double delay, Task task) { return impl_->add(delay, 0, std::move(task)); }

SerialQueue::TimerId AsioLoop::every(double first, double period, Task task) {
    return impl_->add(first, std::max(period, 1e-6), std::move(task));
}

void AsioLoop::cancel(TimerId timer) { impl_->cancel(timer); }

bool AsioLoop::isCurrent() const { return impl_->runner.load() == std::this_thread::get_id(); }

void AsioLoop::run() {
    impl_->runner.store(std::this_thread::get_id());
    impl_->context.run();
    impl_->context.restart();  // so that it can be run again
    impl_->runner.store({});
}

void AsioLoop::quit() { impl_->context.stop(); }

void AsioLoop::finish() {
    asio::post(impl_->context, [impl = impl_.get()] {
        impl->endTimers();
        impl->work.reset();
    });
}

asio::io_context& AsioLoop::context() { return impl_->context; }

AsioThread::AsioThread(const std::string& name)
    : thread_([shared = shared_] {
          shared->loop->run();
          std::unique_lock lock(shared->mutex);
          shared->stopped = true;
          shared->changed.notify_all();
          if (!shared->finishing) return;
          auto loop = std::move(shared->loop);
          lock.unlock();
          loop.reset();
          lock.lock();
          shared->ended = true;
          shared->changed.notify_all();
      }) {
#ifdef __linux__
    pthread_setname_np(thread_.native_handle(), name.substr(0, 15).c_str());
#else
    (void)name;
#endif
}

void AsioThread::finish() {
    patientUntil_ = SteadyTime::now() + seconds(patience);
    std::lock_guard lock(shared_->mutex);
    shared_->finishing = true;
    shared_->loop->finish();
}

void AsioThread::quit() {
    std::lock_guard lock(shared_->mutex);
    if (shared_->loop) shared_->loop->quit();
}

bool AsioThread::ended() const {
    std::lock_guard lock(shared_->mutex);
    return shared_->ended;
}

AsioThread::~AsioThread() {
    std::unique_lock lock(shared_->mutex);
    Shared& shared = *shared_;
    const auto ended = [&shared] { return shared.ended; };
    if (shared.finishing && !shared.changed.wait_until(lock, patientUntil_, ended)) {
        if (shared.loop) shared.loop->quit();
        shared.changed.wait(lock, [&shared] { return shared.stopped; });
        // its tasks are over; what is left is the loop's own
        const auto until = std::max(patientUntil_ + seconds(resolverPatience), SteadyTime::now() + seconds(0.05));
        if (!shared.changed.wait_until(lock, until, ended)) {
            thread_.detach();
            return;
        }
    }
    if (shared.loop) shared.loop->quit();
    lock.unlock();
    thread_.join();
}

}  // namespace vmr
