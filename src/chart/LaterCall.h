// A call that is made in a later turn of the main loop, once however often it was asked for.
#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace vmr {

/// Nothing is called once it is gone. Asking costs memory only when no call is due yet. Main thread.
class LaterCall {
 public:
    using Post = std::function<void(std::function<void()>)>;

    /// `post` runs a task later, never at once; it may run it, or drop it, after this is gone.
    LaterCall(Post post, std::function<void()> call)
        : post_(std::move(post)), state_(std::make_shared<State>(State{std::move(call)})) {}

    void ask() {
        if (std::exchange(state_->due, true)) return;
        post_([weak = std::weak_ptr(state_)] {
            const auto state = weak.lock();  // the call may end the one who asked
            if (!state) return;
            state->due = false;
            state->call();
        });
    }

 private:
    struct State {
        std::function<void()> call;
        bool due = false;
    };
    Post post_;
    std::shared_ptr<State> state_;
};

}  // namespace vmr
