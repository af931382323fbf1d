// An event loop without a toolkit: the windowless shell's main loop, the relay client's queue, the practice relay.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "base/SerialQueue.h"

namespace boost::asio {
class io_context;
}

namespace vmr {

/// A `SerialQueue` over one Asio context, run by the one thread that calls `run`.
class AsioLoop final : public SerialQueue {
 public:
    AsioLoop();
    ~AsioLoop() override;
    AsioLoop(const AsioLoop&) = delete;
    AsioLoop& operator=(const AsioLoop&) = delete;

    void post(Task task) override;
    TimerId after(double seconds, Task task) override;
    TimerId every(double first, double period, Task task) override;
    void cancel(TimerId timer) override;
    bool isCurrent() const override;

    /// Runs tasks on the calling thread until `quit`, of which one given before counts. May be called again.
    void run();

    /// Makes `run` return soon; from any thread. Tasks not yet run stay queued.
    void quit();

    /// Lets `run` return, for good, once nothing is under way any more: tasks posted before are carried out and
    /// sockets that live here come to their ends, but timers end without running. From any thread.
    void finish();

    /// The context, for sockets that live on this loop.
    boost::asio::io_context& context();

 private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

/// An `AsioLoop` with a thread of its own that runs it from construction to destruction. Not to be used from that
/// thread.
class AsioThread {
 public:
    /// `name` is what a debugger shows (15 characters count on Linux).
    explicit AsioThread(const std::string& name);
    /// Quits the loop and joins. After `finish` it waits at most `patience` for the orderly end, drops what is then
    /// still under way, and leaves a thread behind that waits for the system's name resolver, which nothing can end.
    ~AsioThread();
    AsioThread(const AsioThread&) = delete;
    AsioThread& operator=(const AsioThread&) = delete;

    static constexpr double patience = 0.5;  ///< seconds after `finish`

    /// Until `finish`; what is left of the loop then goes with the thread.
    AsioLoop& loop() { return *shared_->loop; }

    /// Begins the end, as `AsioLoop::finish`; returns at once. Once.
    void finish();

    /// After `finish`: drops what is still under way.
    void quit();

    /// After `finish`: the thread has ended, so that destruction waits for nothing.
    bool ended() const;

 private:
    struct Shared {
        std::mutex mutex;  // guards the flags; the loop from `finishing` on
        std::condition_variable changed;
        std::unique_ptr<AsioLoop> loop = std::make_unique<AsioLoop>();
        bool finishing = false;  // the thread destroys the loop
        bool stopped = false;    // runs no task any more
        bool ended = false;
    };
    const std::shared_ptr<Shared> shared_ = std::make_shared<Shared>();
    std::chrono::steady_clock::time_point patientUntil_;
    std::thread thread_;
};

}  // namespace vmr
