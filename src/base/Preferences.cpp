#include "base/Preferences.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <system_error>

#include "base/FileReplace.h"

namespace vmr {

namespace fs = std::filesystem;
using nlohmann::json;

FilePreferences::FilePreferences(fs::path file) : file_(std::move(file)) { reload(); }

std::optional<std::string> FilePreferences::get(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

void FilePreferences::set(std::string_view key, std::string_view value) {
    if (!writeFailed_) reload();
    values_.insert_or_assign(std::string(key), value);
    store();
}

void FilePreferences::remove(std::string_view key) {
    if (!writeFailed_) reload();
    const auto found = values_.find(key);
    if (found == values_.end()) return;
    values_.erase(found);
    store();
}

void FilePreferences::reload() {
    const auto bytes = readFile(file_);
    if (!bytes) {
        std::error_code ignored;
        undecodable_ = fs::exists(file_, ignored);  // it is there and cannot be read: kept aside as well
        return;
    }
    const json stored = json::parse(*bytes, nullptr, false);
    undecodable_ = !stored.is_object();
    if (undecodable_) return;
    values_.clear();
    for (const auto& [key, value] : stored.items())
        if (value.is_string()) values_.emplace(key, value.get<std::string>());
}

void FilePreferences::store() {
    if (undecodable_) {
        fs::path beside = file_;
        beside += ".bad";
        std::error_code ignored;
        fs::rename(file_, beside, ignored);
        undecodable_ = false;
    }
    const auto problem = replaceFile(file_, json(values_).dump(1, ' ', false, json::error_handler_t::replace) + "\n");
    if (problem && !writeFailed_) std::fprintf(stderr, "velmora: settings are not saved: %s\n", problem->c_str());
    writeFailed_ = problem.has_value();
}

std::optional<std::string> MemoryPreferences::get(std::string_view key) const {
    const auto found = values_.find(key);
    if (found == values_.end()) return std::nullopt;
    return found->second;
}

void MemoryPreferences::remove(std::string_view key) {
    if (const auto found = values_.find(key); found != values_.end()) values_.erase(found);
}

}  // namespace vmr
