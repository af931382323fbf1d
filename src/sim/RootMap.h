// Values by futures root.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vmr::sim {

/// A map for the few roots that a process sees, in the order in which they came. A look-up walks them: faster than
/// hashing at this size, and without allocation once a root is known.
template <class T>
class RootMap {
 public:
    struct Entry {
        std::string root;
        T value{};
    };

    RootMap() = default;
    RootMap(std::initializer_list<Entry> entries) : entries_(entries) {}

    /// The value of `root`, valid until the next new root; null when there is none.
    const T* find(std::string_view root) const {
        for (const Entry& entry : entries_)
            if (root == entry.root) return &entry.value;
        return nullptr;
    }

    /// The value of `root`, made when there is none.
    T& operator[](std::string_view root) {
        for (Entry& entry : entries_)
            if (root == entry.root) return entry.value;
        return entries_.emplace_back(Entry{std::string(root), {}}).value;
    }

    void erase(std::string_view root) {
        std::erase_if(entries_, [root](const Entry& entry) { return entry.root == root; });
    }

    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

 private:
    std::vector<Entry> entries_;
};

}  // namespace vmr::sim
