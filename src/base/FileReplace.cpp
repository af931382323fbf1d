#include "base/FileReplace.h"

#include <fstream>
#include <random>
#include <system_error>

#include "base/PrivateFile.h"
#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

namespace vmr {

namespace fs = std::filesystem;

namespace {
constexpr std::string_view ending = ".new";
constexpr std::size_t randomDigits = 16;

// A name that nobody can have put there before.
fs::path nameBeside(const fs::path& path) {
    std::random_device random;
    std::string name = ".";
    for (std::size_t i = 0; i < randomDigits; ++i) name += "0123456789abcdef"[random() % 16];
    fs::path beside = path;
    return beside += name.append(ending);
}

#ifdef _WIN32
void flushFolder(const fs::path&) {}
#else
void flushFolder(const fs::path& folder) {
    const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    ::fsync(handle);
    ::close(handle);
}
#endif
}  // namespace

std::optional<std::string> replaceFile(const fs::path& path, std::string_view bytes) {
    if (auto problem = makePrivateFolders(path.parent_path())) return problem;
    return replacePrivateFile(path, bytes);
}

std::optional<std::string> replacePrivateFile(const fs::path& path, std::string_view bytes) {
    const fs::path beside = nameBeside(path);
    std::error_code error;
    if (auto problem = writeNewPrivateFile(beside, bytes)) {
        fs::remove(beside, error);
        return problem;
    }
    fs::rename(beside, path, error);
    if (error) {
        const std::string problem = "cannot replace " + path.string() + ": " + error.message();
        fs::remove(beside, error);
        return problem;
    }
    flushFolder(path.parent_path());
    return std::nullopt;
}

void removeLeftovers(const fs::path& path) {
    const std::string start = path.filename().string() + ".";
    std::error_code error;
    for (fs::directory_iterator at(path.parent_path(), error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename().string();
        std::error_code ignored;
        if (name.starts_with(start) && name.ends_with(ending) &&
            name.size() == start.size() + randomDigits + ending.size())
            fs::remove(at->path(), ignored);
    }
}

std::optional<std::string> readFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    // read() turns a failing device, or a folder under that name, into a bad stream; the iterators would throw
    std::string bytes;
    char part[16384];
    while (file.read(part, sizeof part) || file.gcount() > 0)
        bytes.append(part, static_cast<std::size_t>(file.gcount()));
    if (file.bad()) return std::nullopt;
    return bytes;
}

}  // namespace vmr
