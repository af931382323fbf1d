#include "sim/SimWatches.h"

#include <algorithm>

namespace vmr::sim {

std::vector<std::string> SimWatches::open(const void* viewer, const std::string& root, const std::string& contract) {
    std::vector<std::string> changed;
    const auto mine = [viewer](const Watch& watch) { return watch.viewer == viewer; };
    bool connected = false;
    if (const auto former = std::find_if(watches_.begin(), watches_.end(), mine); former != watches_.end()) {
        const std::string left = former->root;
        connected = former->connected;
        watches_.erase(former);
        const auto heir = std::find_if(watches_.rbegin(), watches_.rend(),
                                       [&left](const Watch& watch) { return watch.root == left; });
        if (left != root && heir != watches_.rend() && follow(left, heir->contract)) changed.push_back(left);
    }
    if (root.empty()) return changed;
    watches_.push_back({viewer, root, contract, connected});
    if (follow(root, contract)) changed.push_back(root);
    return changed;
}

bool SimWatches::follow(const std::string& root, const std::string& contract) {
    std::string& followed = contracts_[root];
    const bool changes = !followed.empty() && followed != contract;
    followed = contract;
    for (Watch& watch : watches_)
        if (watch.root == root) watch.followed = watch.contract == contract;
    return changes;
}

bool SimWatches::roll(const std::string& root, const std::string& contract) {
    return contracts_.find(root) && !watched(root) && follow(root, contract);
}

void SimWatches::setConnected(const void* viewer, bool connected) {
    for (Watch& watch : watches_)
        if (watch.viewer == viewer) watch.connected = connected;
}

bool SimWatches::follows(const void* viewer) const {
    for (const Watch& watch : watches_)
        if (watch.viewer == viewer) return watch.followed;
    return false;
}

bool SimWatches::watched(std::string_view root) const {
    return std::any_of(watches_.begin(), watches_.end(), [root](const Watch& watch) { return watch.root == root; });
}

bool SimWatches::connected(std::string_view root) const {
    return std::any_of(watches_.begin(), watches_.end(),
                       [&](const Watch& watch) { return watch.root == root && watch.connected && watch.followed; });
}

std::string_view SimWatches::contract(std::string_view root) const {
    const std::string* known = contracts_.find(root);
    return known ? std::string_view(*known) : std::string_view();
}

}  // namespace vmr::sim
