#include "sim/SimStore.h"

#include <cmath>
#include <system_error>

#include "base/PrivateFile.h"
#include "sim/SimAccountText.h"

namespace vmr {

namespace fs = std::filesystem;

namespace {
// Letters, digits, "-" and "." stay, any other byte becomes "_" and its code. Of a name that is too long for a file,
// the end is replaced by a number made of all of it.
std::string asFileName(const std::string& name) {
    constexpr std::size_t longest = 120;
    constexpr std::string_view digits = "0123456789abcdef";
    std::string out;
    std::uint64_t hash = 14695981039346656037u;  // FNV-1a, the same on every platform
    for (const char c : name) {
        const auto code = static_cast<unsigned char>(c);
        hash = (hash ^ code) * 1099511628211u;
        const bool stays =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.';
        out += stays ? c : '_';
        if (!stays) (out += digits[code >> 4]) += digits[code & 15];
    }
    return out.size() <= longest ? out : out.substr(0, longest) + "_" + std::to_string(hash);
}
}  // namespace

std::string SimStore::fileName(const std::string& market) {
    return "sim-account" + (market.empty() ? "" : "-" + asFileName(market)) + ".json";
}

SimStore::SimStore(fs::path file, const Clock& clock, Write write)
    : file_(std::move(file)), clock_(clock), write_(std::move(write)) {
    lock_.emplace(lockFile());
}

fs::path SimStore::lockFile() const {
    fs::path name = file_;
    return name += ".lock";
}

bool SimStore::takeLock() {
    if (isHeldElsewhere()) lock_.emplace(lockFile());
    return !isHeldElsewhere();
}

std::optional<sim::Snapshot> SimStore::load() {
    std::error_code ignored;
    const auto bytes = readPrivateFile(file_);
    auto account = bytes ? sim::readAccount(*bytes) : std::nullopt;
    // A file that cannot be read may still matter to its owner: the first save sets it aside instead of replacing it.
    unreadable_ = !account && fs::exists(fs::symlink_status(file_, ignored));
    return account;
}

std::optional<std::string> SimStore::save(const sim::Snapshot& account, std::uint64_t revision) {
    const auto text = sim::accountText(account);
    if (!text) return "the account holds a number that is not finite";
    const std::lock_guard lock(mutex_);
    if (revision <= written_) return std::nullopt;  // the file queue and a flush at the end may overtake each other
    if (auto problem = keepUnreadable()) return problem;
    if (auto problem = write_(file_, *text)) return problem;
    written_ = revision;
    return std::nullopt;
}

std::optional<std::string> SimStore::keepUnreadable() {
    if (!unreadable_) return std::nullopt;
    fs::path name = file_;
    name += ".bad-" + std::to_string(std::llround(clock_.now()));
    fs::path kept = name;
    std::error_code error;
    // never over a file that was set aside in the same second
    for (int i = 2; fs::exists(fs::symlink_status(kept, error)); ++i) (kept = name) += "-" + std::to_string(i);
    fs::rename(file_, kept, error);
    if (error && error != std::errc::no_such_file_or_directory)
        return "cannot keep " + file_.string() + ": " + error.message();
    unreadable_ = false;
    return std::nullopt;
}

}  // namespace vmr
