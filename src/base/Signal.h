// Change notices: who wants to hear of something, and values that tell when they change.
#pragma once

#include <algorithm>
#include <cstdint>
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

template <class... Args>
class Signal;

/// Holds the notices of a group of signals back while values that belong together change one after the other. Must
/// outlive its signals' last notice. One thread.
class NoticeGate {
 public:
    /// While one exists, the gate is closed. When the last one goes, each signal that was due gives one notice, in the
    /// order in which they came to be due. A notice may close the gate again; what that holds back follows behind.
    class [[nodiscard]] Hold {
     public:
        explicit Hold(NoticeGate& gate) : gate_(gate) { ++gate_.holds_; }
        Hold(const Hold&) = delete;
        ~Hold() { gate_.release(); }

     private:
        NoticeGate& gate_;
    };

 private:
    template <class...>
    friend class Signal;
    /// Whether the gate keeps the notice for later.
    bool keeps(Signal<>& signal) {
        if (holds_ == 0) return false;
        if (std::find(due_.begin() + given_, due_.end(), &signal) == due_.end()) due_.push_back(&signal);
        return true;
    }
    inline void release();

    int holds_ = 0;
    std::vector<Signal<>*> due_;  // its memory is used again
    std::ptrdiff_t given_ = 0;    // how many of these have had their notice
    bool giving_ = false;
};

/// Calls its subscribers in the order in which they came. One thread. Subscribing or ending a subscription inside a
/// notice is allowed; a new subscriber hears from the next notice on.
template <class... Args>
class Signal {
 public:
    Signal() = default;
    /// Notices wait while the gate is closed; null for no gate.
    explicit Signal(NoticeGate* gate) requires(sizeof...(Args) == 0) : gate_(gate) {}

    [[nodiscard]] Connection connect(std::function<void(Args...)> handler) {
        auto alive = std::make_shared<bool>(true);
        slots_.push_back(std::make_shared<Slot>(Slot{alive, std::move(handler)}));
        return Connection(alive);
    }

    void operator()(Args... args) {
        if constexpr (sizeof...(Args) == 0) {
            if (gate_ && gate_->keeps(*this)) return;
        }
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
    NoticeGate* gate_ = nullptr;
};

inline void NoticeGate::release() {
    if (holds_ > 1 || giving_) {
        --holds_;
        return;
    }
    holds_ = 0;
    giving_ = true;
    while (given_ < std::ssize(due_)) (*due_[static_cast<std::size_t>(given_++)])();
    due_.clear();
    given_ = 0;
    giving_ = false;
}

/// A value that tells when it becomes another one. One thread.
template <class T>
class Observable {
 public:
    Observable() = default;
    explicit Observable(T value) : value_(std::move(value)) {}
    /// Notices wait while `gate` is closed; null for no gate.
    explicit Observable(NoticeGate* gate, T value = T()) : changed(gate), value_(std::move(value)) {}
    Observable(const Observable&) = delete;
    /// Takes over the value alone, as assigning it would; the subscribers stay.
    Observable& operator=(Observable&& other) { return *this = std::move(other.value_); }

    const T& get() const { return value_; }
    operator const T&() const { return value_; }
    const T* operator->() const { return &value_; }

    /// Stores and, if the value differs from the old one, gives notice.
    Observable& operator=(T value) {
        if (!(value_ == value)) {
            value_ = std::move(value);
            ++revision_;
            changed();
        }
        return *this;
    }

    /// Raised with each change, before its notice.
    std::uint64_t revision() const { return revision_; }

    /// Changes the value in place and gives notice without comparing; for long lists.
    template <class F>
    void edit(F&& change) {
        change(value_);
        ++revision_;
        changed();
    }

    Signal<> changed;

 private:
    T value_{};
    std::uint64_t revision_ = 0;
};

}  // namespace vmr
