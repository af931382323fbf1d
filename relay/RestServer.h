// The HTTP port of the sign-in endpoints.
#pragma once

#include <optional>
#include <string>

#include "relay/Faults.h"
#include "relay/LoopbackListener.h"
#include "relay/RestApi.h"

namespace vmr::relay {

/// Used on its loop's thread. Everything given must outlive it.
class RestServer {
 public:
    RestServer(AsioLoop& loop, RestApi& api, const Faults& faults);
    std::optional<std::string> open(int port) { return listener_.open(port); }
    int port() const { return listener_.port(); }
    void stop() { listener_.stop(); }

 private:
    LoopbackListener listener_;
};

}  // namespace vmr::relay
