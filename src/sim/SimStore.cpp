#include "sim/SimStore.h"

#include <cmath>
#include <system_error>

#include "base/PrivateFile.h"
#include "sim/SimAccountText.h"

namespace vmr {

namespace fs = std::filesystem;

SimStore::SimStore(const fs::path& folder, const Clock& clock, Write write)
    : file_(folder / "sim-account.json"),
      clock_(clock),
      write_(std::move(write)),
      lock_(folder / "sim-account.json.lock") {}

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
