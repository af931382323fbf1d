// Which panes show which root, and the contract that the account follows for each root.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sim/RootMap.h"

namespace vmr::sim {

/// A root's contract is that of the chart of the root that was opened last and is still shown; when nobody shows the
/// root, the last one stays. Prices of another contract are not the root's. Main thread.
class SimWatches {
 public:
    /// `viewer` shows this contract of `root` from now on, and nothing else; an empty root is none. Gives the roots
    /// that follow another contract than before.
    std::vector<std::string> open(const void* viewer, const std::string& root, const std::string& contract);
    /// The server names another contract for a root that nobody shows; whether that changes anything.
    bool roll(const std::string& root, const std::string& contract);
    void setConnected(const void* viewer, bool connected);

    /// Whether the account follows the contract that `viewer` shows.
    bool follows(const void* viewer) const;
    /// Whether anybody shows the root.
    bool watched(std::string_view root) const;
    /// Whether the root's contract comes over a connection that stands.
    bool connected(std::string_view root) const;
    /// Empty for a root that was never shown.
    std::string_view contract(std::string_view root) const;
    const RootMap<std::string>& contracts() const { return contracts_; }

 private:
    struct Watch {
        const void* viewer;
        std::string root, contract;
        bool connected;
        bool followed = false;  // the account follows this contract of the root; asked with every price
    };
    bool follow(const std::string& root, const std::string& contract);

    std::vector<Watch> watches_;  // the one that was opened last is the last one
    RootMap<std::string> contracts_;
};

}  // namespace vmr::sim
