// The lines by which a person or a test makes things go wrong.
#pragma once

#include <string>
#include <string_view>

#include "base/Clock.h"
#include "base/CommandTable.h"
#include "relay/Accounts.h"
#include "relay/CloudDesk.h"
#include "relay/Faults.h"
#include "relay/MarketPublisher.h"
#include "relay/MetaPublisher.h"
#include "relay/SocketServer.h"
#include "relay/TemplateShelf.h"

namespace vmr::relay {

/// Carries out one line: "ok ..." or "error: ...". The relay's thread.
class FaultConsole {
 public:
    struct Parts {
        const Clock& clock;
        Faults& faults;
        Accounts& accounts;
        ChannelHub& hub;
        MarketPublisher& market;
        MetaPublisher& meta;
        SocketServer& sockets;
        CloudDesk& cloud;
        TemplateShelf& templates;
    };
    explicit FaultConsole(Parts parts);
    FaultConsole(const FaultConsole&) = delete;

    static constexpr std::size_t largestSnapshot = 200000000;

    std::string run(std::string_view line);

 private:
    std::string drop();
    std::string close(const std::string& code);
    std::string delay(const std::string& seconds);
    std::string malformed(const std::string& count);
    std::string wrong(const std::string& count);
    std::string big(const std::string& bytes, const std::string& channel, bool derived);
    std::string contract(const std::string& root, const std::string& contract);
    std::string status() const;
    void addCloud();

    Parts parts_;
    CommandTable commands_;
};

}  // namespace vmr::relay
