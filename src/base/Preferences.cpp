#include "base/Preferences.h"

#include <cstdio>
#include <mutex>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>
#include <variant>

#include "base/FileLock.h"
#include "base/FileReplace.h"

namespace vmr {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {
// How long the last write waits for another process's lock; then it goes on without it. Others try again later.
constexpr double lockPatience = 1;

using Text = std::variant<std::string, std::shared_ptr<const Preferences::TextMaker>>;

const std::string& madeText(Text& text) {
    if (const auto* maker = std::get_if<std::shared_ptr<const Preferences::TextMaker>>(&text)) text = (**maker)();
    return std::get<std::string>(text);
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
        auto stored = read();
        // a file that is gone, or no good, is made anew from what is known here
        json object = stored ? *stored : known_;
        for (auto& [key, text] : changes) {
            if (text)
                object[key] = madeText(*text);
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

    int writes() {
        std::lock_guard lock(mutex_);
        return writes_;
    }

 private:
    using Changes = std::map<std::string, std::optional<Text>, std::less<>>;  // without a text: removed

    std::optional<json> read() {
        const auto bytes = readFile(path_);
        json stored = bytes ? json::parse(*bytes, nullptr, false) : json(json::value_t::discarded);
        std::error_code ignored;
        // a file that is there and cannot be read is kept aside as well
        undecodable_ = !stored.is_object() && fs::exists(path_, ignored);
        if (!stored.is_object()) return std::nullopt;
        return stored;
    }

    bool replace(const json& object) {
        if (std::exchange(undecodable_, false)) {
            std::error_code ignored;
            fs::rename(path_, beside(path_, ".bad"), ignored);
        }
        const auto problem = replaceFile(path_, object.dump(1, ' ', false, json::error_handler_t::replace) + "\n");
        if (problem && !std::exchange(complained_, true))
            std::fprintf(stderr, "velmora: settings are not saved: %s\n", problem->c_str());
        if (!problem) complained_ = false;
        return !problem;
    }

    /// What the file holds now, but for what has changed here in the meantime.
    void take(json object) {
        std::lock_guard lock(mutex_);
        std::erase_if(values_, [this](const auto& entry) { return !changes_.contains(entry.first); });
        for (const auto& [key, value] : object.items())
            if (value.is_string() && !changes_.contains(key)) values_.insert_or_assign(key, value.get<std::string>());
        known_ = std::move(object);
    }

    /// After a failed write they wait for the next one; newer changes of the same keys go before them.
    bool giveBack(Changes changes) {
        std::lock_guard lock(mutex_);
        changes_.merge(changes);
        return true;
    }

    const fs::path path_;
    std::mutex writing_;  // one write at a time; guards the three below
    json known_ = json::object();
    bool undecodable_ = false;
    bool complained_ = false;
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

void FilePreferences::flush() { file_->write(true); }

int FilePreferences::writes() const { return file_->writes(); }

std::optional<std::string> MemoryPreferences::get(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

void MemoryPreferences::remove(std::string_view key) {
    if (const auto found = values_.find(key); found != values_.end()) values_.erase(found);
}

}  // namespace vmr
