// Which proxy a connection goes through, asked without waiting for the answer.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "base/Clock.h"
#include "base/SerialQueue.h"
#include "base/SystemProxies.h"
#include "services/net/NetworkRules.h"

namespace vmr {

/// Answers from the environment at once, and where `systemDecides` asks the system, on a thread that waits in the
/// asker's place: a script may take seconds. Its answers hold for a minute, and several who ask about one machine share
/// a question. A thread that still waits when the process ends is left behind. Any thread.
class ProxyFinder {
    struct State;
    struct Asker;

 public:
    using Found = std::function<void(const std::optional<Proxy>& proxy)>;

    static constexpr double holdsSeconds = 60;

    /// Somebody waits for an answer; none comes once this has gone, which is on the queue that it was to come on.
    class Question {
     public:
        Question() = default;
        Question(Question&& other) noexcept = default;
        Question& operator=(Question&& other) noexcept;
        ~Question() { drop(); }
        explicit operator bool() const { return asker_ != nullptr; }

     private:
        friend class ProxyFinder;
        explicit Question(std::shared_ptr<Asker> asker) : asker_(std::move(asker)) {}
        void drop();
        std::shared_ptr<Asker> asker_;
    };

    /// Knows the environment alone.
    ProxyFinder() = default;
    ProxyFinder(const Clock& clock, SystemProxyLookup system);

    /// Tells `found` the proxy for `target`, of the system's the first that is of one of `schemes` (which live as long
    /// as the process): within the call, and then returns no question, or later on `queue`.
    [[nodiscard]] Question find(const Url& target, std::span<const std::string_view> schemes, SerialQueue& queue,
                                Found found);

 private:
    std::shared_ptr<State> state_;
};

}  // namespace vmr
