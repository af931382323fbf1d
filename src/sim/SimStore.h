// The account's file, and who may write it.
#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>

#include "base/Clock.h"
#include "base/FileLock.h"
#include "base/FileReplace.h"
#include "sim/SimRecords.h"

namespace vmr {

/// An account's file, with a lock beside it that the first process of several holds until it ends.
class SimStore {
 public:
    /// Puts the bytes at the path, whole or not at all; the text of what failed.
    using Write = std::function<std::optional<std::string>(const std::filesystem::path&, std::string_view)>;

    /// Takes the lock. `clock` names files that are kept; it must outlive the store.
    SimStore(std::filesystem::path file, const Clock& clock, Write write = replaceFile);

    /// The file of the account that trades a market of this name; the plain "sim-account.json" for no name. No two
    /// names give one file, whatever stands in them.
    static std::string fileName(const std::string& market);
    const std::filesystem::path& file() const { return file_; }

    /// Another process holds the account: it may be read, and `save` is not called.
    bool isHeldElsewhere() const { return lock_->state() == FileLock::State::heldElsewhere; }
    /// Looks again whether that process has ended, and takes its place; whether the account is free of it.
    bool takeLock();

    /// The saved account, or nothing when there is none or it does not decode. Before the first save.
    std::optional<sim::Snapshot> load();

    /// `load` found something that it could not read; the first save keeps it beside the file.
    bool foundUnreadable() const { return unreadable_; }

    /// Replaces the file, unless a newer revision stands in it already; what failed. Any thread.
    std::optional<std::string> save(const sim::Snapshot& account, std::uint64_t revision);

 private:
    std::filesystem::path lockFile() const;
    std::optional<std::string> keepUnreadable();
    std::filesystem::path file_;
    const Clock& clock_;
    Write write_;
    std::optional<FileLock> lock_;  // never empty
    std::mutex mutex_;
    std::uint64_t written_ = 0;
    bool unreadable_ = false;
};

}  // namespace vmr
