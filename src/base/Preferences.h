// Small named texts that outlive the process.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// Stored texts by key. Main thread only.
class Preferences {
 public:
    virtual ~Preferences() = default;
    /// The stored text, or nothing.
    virtual std::optional<std::string> get(std::string_view key) const = 0;
    /// Stores at once. A failed write is reported once on standard error and the value still holds in memory.
    virtual void set(std::string_view key, std::string_view value) = 0;
    virtual void remove(std::string_view key) = 0;
};

/// Preferences in one JSON file, an object of strings, replaced whole on every change. Another process's changes are
/// picked up before each write, so that two processes lose nothing but a race for the same key. A file that does not
/// decode counts as empty and is kept beside as "<name>.bad" before it is replaced.
class FilePreferences final : public Preferences {
 public:
    explicit FilePreferences(std::filesystem::path file);
    std::optional<std::string> get(std::string_view key) const override;
    void set(std::string_view key, std::string_view value) override;
    void remove(std::string_view key) override;

 private:
    void reload();
    void store();
    std::filesystem::path file_;
    std::map<std::string, std::string, std::less<>> values_;
    bool undecodable_ = false;
    bool writeFailed_ = false;
};

/// Preferences that end with the process.
class MemoryPreferences final : public Preferences {
 public:
    std::optional<std::string> get(std::string_view key) const override;
    void set(std::string_view key, std::string_view value) override {
        values_.insert_or_assign(std::string(key), value);
    }
    void remove(std::string_view key) override;
    const std::map<std::string, std::string, std::less<>>& values() const { return values_; }

 private:
    std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace vmr
