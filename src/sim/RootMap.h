// Values by futures root.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vmr::sim {

/// The roots are a few characters long: comparing them here is quicker than a call for each.
inline bool sameRoot(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (a[i] != b[i]) return false;
    return true;
}

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
            if (sameRoot(root, entry.root)) return &entry.value;
        return nullptr;
    }

    T* find(std::string_view root) { return const_cast<T*>(std::as_const(*this).find(root)); }

    /// The value of `root`, made when there is none.
    T& operator[](std::string_view root) {
        for (Entry& entry : entries_)
            if (sameRoot(root, entry.root)) return entry.value;
        return entries_.emplace_back(Entry{std::string(root), {}}).value;
    }

    auto begin() const { return entries_.begin(); }
    auto end() const { return entries_.end(); }

 private:
    std::vector<Entry> entries_;
};

}  // namespace vmr::sim
