// Change notices: who wants to hear of something, and values that tell when they change.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vmr {

/// Ends a subscription when destroyed. Movable; an empty one does nothing. May outlive the signal.
class Connection {
 public:
    Connection() = default;
    explicit Connection(std::shared_ptr<bool> alive) : alive_(std::move(alive)) {}
    Connection(Connection&& other) noexcept : alive_(std::move(other.alive_)) {}
    Connection& operator=(Connection&& other) noexcept {
        end();
        alive_ = std::move(other.alive_);
        return *this;
    }
    ~Connection() { end(); }
    void end() {
        if (alive_) *alive_ = false;
        alive_.reset();
    }

 private:
    std::shared_ptr<bool> alive_;
};

/// Calls its subscribers in the order in which they came. One thread. Subscribing or ending a subscription inside a
/// notice is allowed; a new subscriber hears from the next notice on.
template <class... Args>
class Signal {
 public:
    [[nodiscard]] Connection connect(std::function<void(Args...)> handler) {
        auto alive = std::make_shared<bool>(true);
        slots_.push_back(std::make_shared<Slot>(Slot{alive, std::move(handler)}));
        return Connection(alive);
    }

    void operator()(Args... args) {
        const std::size_t count = slots_.size();
        ++depth_;
        for (std::size_t i = 0; i < count; ++i) {
            auto slot = slots_[i];
            if (*slot->alive) slot->handler(args...);
        }
        if (--depth_ == 0) std::erase_if(slots_, [](const auto& slot) { return !*slot->alive; });
    }

 private:
    struct Slot {
        std::shared_ptr<bool> alive;
        std::function<void(Args...)> handler;
    };
    std::vector<std::shared_ptr<Slot>> slots_;
    int depth_ = 0;
};

/// A value that tells when it becomes another one. One thread.
template <class T>
class Observable {
 public:
    Observable() = default;
    explicit Observable(T value) : value_(std::move(value)) {}
    Observable(const Observable&) = delete;

    const T& get() const { return value_; }
    operator const T&() const { return value_; }
    const T* operator->() const { return &value_; }

    /// Stores and, if the value differs from the old one, gives notice.
    Observable& operator=(T value) {
        if (!(value_ == value)) {
            value_ = std::move(value);
            changed();
        }
        return *this;
    }

    /// Changes the value in place and gives notice without comparing; for long lists.
    template <class F>
    void edit(F&& change) {
        change(value_);
        changed();
    }

    Signal<> changed;

 private:
    T value_{};
};

}  // namespace vmr
