// A plain client of the practice relay, and one request at a time to its sign-in endpoints.
#pragma once

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "relay/PracticeRelay.h"

namespace vmr::test {

/// What a read gave: a message, or how the connection ended.
struct Heard {
    std::string text;
    bool binary = false;
    int closeCode = 0;   ///< of a close frame
    bool ended = false;  ///< closed, dropped, or nothing came in time
    bool timedOut = false;
};

/// Blocking calls, each with a limit of 20 real seconds.
class RelayProbe {
 public:
    /// Opens a socket with this token; `status()` is 101 when it was let in.
    RelayProbe(const PracticeRelay& relay, const std::string& token);
    ~RelayProbe();

    int status() const;
    void send(const std::string& text);
    void subscribe(const std::vector<std::string>& channels);
    Heard read(double seconds = 20);
    /// Reads messages, dropping those for which `wanted` does not hold; null when the connection ended first.
    nlohmann::json next(const std::function<bool(const nlohmann::json&)>& wanted);
    /// The next message of that type and, unless empty, channel.
    nlohmann::json next(const std::string& type, const std::string& channel = {});

 private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// One POST; status and body.
std::pair<int, std::string> post(const PracticeRelay& relay, const std::string& target, const std::string& body);

/// Signs the practice account in and gives its identity token.
std::string signedIn(const PracticeRelay& relay);

}  // namespace vmr::test
