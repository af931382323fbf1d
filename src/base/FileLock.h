// One process at a time: an advisory lock in the shape of a file.
#pragma once

#include <cstdint>
#include <filesystem>

namespace vmr {

/// Takes the lock, and holds it until destroyed or until the process ends, however it ends. Missing folders are made.
/// The file itself is empty, and stays. It and its folder are this user's alone, as `makePrivateFolders` tells.
class FileLock {
 public:
    enum class State {
        held,
        heldElsewhere,
        unavailable  ///< the file cannot be made or is not this user's own, or its file system knows no locks
    };

    /// Tries for `patience` real seconds while somebody else has it, with 0 once.
    explicit FileLock(const std::filesystem::path& file, double patience = 0);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

    State state() const { return state_; }

 private:
    void tryOnce(const std::filesystem::path& file);

    static constexpr std::intptr_t none = -1;
    std::intptr_t handle_ = none;  // the platform's
    State state_ = State::unavailable;
};

}  // namespace vmr
