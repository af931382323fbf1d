#include "base/Preferences.h"

#include <atomic>
#include <cstdio>
#include <mutex>
#include <system_error>
#include <utility>
#include <variant>

#include "base/FileLock.h"
#include "base/FileReplace.h"
#include "base/JsonMembers.h"
#include "base/PrivateFile.h"

namespace vmr {

namespace fs = std::filesystem;

namespace {
// How long the last write waits for another process's lock; then it goes on without it. Others try again later.
constexpr double lockPatience = 1;

using Text = std::variant<std::string, std::shared_ptr<const Preferences::TextMaker>>;

const std::string& madeText(Text& text) {
    if (const auto* maker = std::get_if<std::shared_ptr<const Preferences::TextMaker>>(&text)) text = (**maker)();
    return std::get<std::string>(text);
}

// Of a map that is ordered by its keys.
template <class Values>
std::vector<std::string> keysOf(const Values& values, std::string_view prefix) {
    std::vector<std::string> out;
    for (auto at = values.lower_bound(prefix); at != values.end() && at->first.starts_with(prefix); ++at)
        out.push_back(at->first);
    return out;
}

fs::path beside(fs::path file, const char* ending) { return file += ending; }
}  // namespace

// The values as this process sees them, what of them the file does not have yet, and the writing. Any thread.
class FilePreferences::File {
 public:
    explicit File(fs::path path) : path_(std::move(path)) {
        if (auto stored = read()) take(std::move(*stored));
    }

    std::optional<std::string> get(std::string_view key) {
        std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found == values_.end()) return std::nullopt;
        return madeText(found->second);
    }

    std::vector<std::string> keys(std::string_view prefix) {
        std::lock_guard lock(mutex_);
        return keysOf(values_, prefix);
    }

    /// Gives whether a write must be asked for: none is on its way.
    bool change(std::string_view key, std::optional<Text> text) {
        std::lock_guard lock(mutex_);
        if (text)
            values_.insert_or_assign(std::string(key), *text);
        else if (const auto found = values_.find(key); found != values_.end())
            values_.erase(found);
        changes_.insert_or_assign(std::string(key), std::move(text));
        return !std::exchange(asked_, true);
    }

    /// Brings the changes into the file. False when another process has the lock; `last` then goes on without it.
    bool write(bool last) {
        std::lock_guard writing(writing_);
        Changes changes;
        {
            std::lock_guard lock(mutex_);
            if (changes_.empty()) {
                asked_ = false;
                return true;
            }
        }
        const FileLock fileLock(beside(path_, ".lock"), last ? lockPatience : 0);
        if (fileLock.state() == FileLock::State::heldElsewhere && !last) return false;
        {
            std::lock_guard lock(mutex_);
            changes.swap(changes_);
            asked_ = false;
        }
        forget_ = forgetAsked_.exchange(false);
        std::error_code ignored;
        if (forget_) fs::remove(beside(path_, ".bad"), ignored);
        if ((std::exchange(sweep_, false) || forget_) && fileLock.state() == FileLock::State::held)
            removeLeftovers(path_);
        auto stored = read();
        // a file that is gone, or no good, is made anew from what is known here
        JsonMembers object = stored ? *stored : known_;
        for (auto& [key, text] : changes) {
            if (text)
                object.insert_or_assign(key, jsonString(madeText(*text)));
            else
                object.erase(key);
        }
        const bool differs = stored ? *stored != object : !object.empty();
        if (differs && !replace(object)) return giveBack(std::move(changes));
        take(std::move(object));
        std::lock_guard lock(mutex_);
        writes_ += differs;
        return true;
    }

    /// Done with the next write.
    void removeSetAside() { forgetAsked_ = true; }

    int writes() {
        std::lock_guard lock(mutex_);
        return writes_;
    }

 private:
    using Changes = std::map<std::string, std::optional<Text>, std::less<>>;  // without a text: removed

    std::optional<JsonMembers> read() {
        const auto bytes = readPrivateFile(path_);
        auto stored = bytes ? jsonMembers(*bytes) : std::nullopt;
        std::error_code ignored;
        // a file that is there and cannot be read is kept aside as well
        undecodable_ = !stored && fs::exists(fs::symlink_status(path_, ignored));
        return stored;
    }

    bool replace(const JsonMembers& object) {
        auto problem = undecodable_ ? setAside() : std::nullopt;
        if (!problem) problem = replaceFile(path_, jsonObject(object));
        if (problem && !std::exchange(complained_, true))
            std::fprintf(stderr, "velmora: settings are not saved: %s\n", problem->c_str());
        if (!problem) complained_ = false;
        return !problem;
    }

    /// Secrets may stand in a file that does not decode, too: the copy is for the owner, and none is kept after
    /// `removeSetAside`.
    std::optional<std::string> setAside() {
        if (auto problem = makePrivateFolders(path_.parent_path())) return problem;
        std::error_code error;
        if (forget_)
            fs::remove(path_, error);
        else
            fs::rename(path_, beside(path_, ".bad"), error);
        if (error) return "cannot set " + path_.string() + " aside: " + error.message();
        undecodable_ = false;
        return std::nullopt;
    }

    /// What the file holds now, but for what has changed here in the meantime.
    void take(JsonMembers object) {
        std::lock_guard lock(mutex_);
        std::erase_if(values_, [this](const auto& entry) { return !changes_.contains(entry.first); });
        for (const auto& [key, text] : object)
            if (auto value = stringOf(text); value && !changes_.contains(key))
                values_.insert_or_assign(key, std::move(*value));
        known_ = std::move(object);
    }

    /// After a failed write they wait for the next one; newer changes of the same keys go before them.
    bool giveBack(Changes changes) {
        std::lock_guard lock(mutex_);
        changes_.merge(changes);
        return true;
    }

    const fs::path path_;
    std::mutex writing_;  // one write at a time; guards the five below
    JsonMembers known_;
    bool undecodable_ = false;
    bool sweep_ = true;    // what killed processes left is still to be removed
    bool forget_ = false;  // this write removes what does not decode instead of setting it aside
    bool complained_ = false;
    std::atomic<bool> forgetAsked_ = false;
    std::mutex mutex_;  // held for a moment only: the main thread takes it; guards the rest
    std::map<std::string, Text, std::less<>> values_;
    Changes changes_;
    bool asked_ = false;
    int writes_ = 0;
};

FilePreferences::FilePreferences(fs::path file, SerialQueue& writer)
    : file_(std::make_shared<File>(std::move(file))), writer_(writer) {}

FilePreferences::~FilePreferences() { flush(); }

std::optional<std::string> FilePreferences::get(std::string_view key) const { return file_->get(key); }

std::vector<std::string> FilePreferences::keys(std::string_view prefix) const { return file_->keys(prefix); }

void FilePreferences::set(std::string_view key, std::string_view value) { change(key, std::string(value)); }

void FilePreferences::setLater(std::string_view key, TextMaker maker) {
    change(key, std::make_shared<const TextMaker>(std::move(maker)));
}

void FilePreferences::remove(std::string_view key) { change(key, std::nullopt); }

template <class Change>
void FilePreferences::change(std::string_view key, Change text) {
    if (file_->change(key, std::move(text))) writeLater(file_, writer_);
}

void FilePreferences::writeLater(const std::shared_ptr<File>& file, SerialQueue& writer) {
    writer.after(pace, [file, &writer] {
        if (!file->write(false)) writeLater(file, writer);
    });
}

void FilePreferences::removeSetAside() { file_->removeSetAside(); }

void FilePreferences::flush() { file_->write(true); }

int FilePreferences::writes() const { return file_->writes(); }

std::optional<std::string> MemoryPreferences::get(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

std::vector<std::string> MemoryPreferences::keys(std::string_view prefix) const { return keysOf(values_, prefix); }

void MemoryPreferences::remove(std::string_view key) {
    if (const auto found = values_.find(key); found != values_.end()) values_.erase(found);
}

}  // namespace vmr
