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
};

AsioLoop::AsioLoop() : impl_(std::make_shared<Impl>()) {}

AsioLoop::~AsioLoop() {
    impl_->context.stop();
    std::unordered_map<TimerId, std::shared_ptr<Impl::Timer>> ended;  // what a task holds may cancel timers as it goes
    std::lock_guard lock(impl_->mutex);
    ended.swap(impl_->timers);
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

asio::io_context& AsioLoop::context() { return impl_->context; }

AsioThread::AsioThread(const std::string& name) : thread_([this] { loop_.run(); }) {
#ifdef __linux__
    pthread_setname_np(thread_.native_handle(), name.substr(0, 15).c_str());
#else
    (void)name;
#endif
}

AsioThread::~AsioThread() {
    loop_.quit();
    thread_.join();
}

}  // namespace vmr
