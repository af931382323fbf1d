// Small named texts that outlive the process.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/SerialQueue.h"

namespace vmr {

/// Stored texts by key. Main thread only.
class Preferences {
 public:
    /// Makes a stored text when it is needed, on any thread, and perhaps never. It must own what it uses.
    using TextMaker = std::function<std::string()>;

    virtual ~Preferences() = default;
    /// The stored text, or nothing.
    virtual std::optional<std::string> get(std::string_view key) const = 0;
    /// The keys that begin so, in order.
    virtual std::vector<std::string> keys(std::string_view prefix) const = 0;
    /// Holds in memory at once, whatever becomes of it on the disk.
    virtual void set(std::string_view key, std::string_view value) = 0;
    /// The same for a text that is long to make.
    virtual void setLater(std::string_view key, TextMaker maker) { set(key, maker()); }
    virtual void remove(std::string_view key) = 0;
    /// Removes copies of stored texts that were set aside because they could not be read, with the next change.
    virtual void removeSetAside() {}
};

/// Preferences in one JSON file, an object of strings, replaced whole and written behind on another thread, at most
/// every `pace` seconds. Several processes may use one file: each writes under a lock ("<name>.lock"), laying what it
/// has changed since its last write over what the file holds by then, so that nothing is lost but a race for the same
/// key. What others have changed is seen here after the next write. Values that are no strings stay as
/// they are written, to the letter. A file that does not decode, or is not this user's own, counts as empty and is kept
/// beside as "<name>.bad", readable by its owner only, before it is replaced. A write that fails is reported once on
/// standard error; the next one tries again.
class FilePreferences final : public Preferences {
 public:
    static constexpr double pace = 0.3;

    /// Reads the file. `writer` runs on a thread other than the main one; both outlive the preferences.
    FilePreferences(std::filesystem::path file, SerialQueue& writer);
    /// Flushes.
    ~FilePreferences() override;
    FilePreferences(const FilePreferences&) = delete;
    FilePreferences& operator=(const FilePreferences&) = delete;

    std::optional<std::string> get(std::string_view key) const override;
    std::vector<std::string> keys(std::string_view prefix) const override;
    void set(std::string_view key, std::string_view value) override;
    void setLater(std::string_view key, TextMaker maker) override;
    void remove(std::string_view key) override;
    /// Also a file that was found to be no good and is not set aside yet: it is replaced.
    void removeSetAside() override;

    /// Writes what has not been written yet, on the calling thread. Waits for another process's lock for a moment.
    void flush();

    /// How many times the file has been replaced.
    int writes() const;

 private:
    class File;
    template <class Change>
    void change(std::string_view key, Change text);
    static void writeLater(const std::shared_ptr<File>& file, SerialQueue& writer);

    const std::shared_ptr<File> file_;  // shared with the writes under way
    SerialQueue& writer_;
};

/// Preferences that end with the process.
class MemoryPreferences final : public Preferences {
 public:
    std::optional<std::string> get(std::string_view key) const override;
    std::vector<std::string> keys(std::string_view prefix) const override;
    void set(std::string_view key, std::string_view value) override {
        values_.insert_or_assign(std::string(key), value);
    }
    void remove(std::string_view key) override;
    const std::map<std::string, std::string, std::less<>>& values() const { return values_; }

 private:
    std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace vmr
