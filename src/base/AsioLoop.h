// An event loop without a toolkit: the windowless shell's main loop, the relay client's queue, the practice relay.
#pragma once

#include <memory>
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

    /// The context, for sockets that live on this loop.
    boost::asio::io_context& context();

 private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

/// An `AsioLoop` with a thread of its own that runs it from construction to destruction.
class AsioThread {
 public:
    /// `name` is what a debugger shows (15 characters count on Linux).
    explicit AsioThread(const std::string& name);
    /// Quits the loop and joins; not from the loop's own thread.
    ~AsioThread();
    AsioThread(const AsioThread&) = delete;
    AsioThread& operator=(const AsioThread&) = delete;

    AsioLoop& loop() { return loop_; }

 private:
    AsioLoop loop_;
    std::thread thread_;
};

}  // namespace vmr
