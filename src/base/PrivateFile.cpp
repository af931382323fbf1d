#include "base/PrivateFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#ifdef _WIN32
#include <io.h>

#include "base/FileReplace.h"
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace vmr {

namespace fs = std::filesystem;

namespace {
using Problem = std::optional<std::string>;

std::string failure(const char* what, const fs::path& path, int error) {
    return std::string(what) + " " + path.string() + ": " + std::strerror(error);
}
}  // namespace

#ifdef _WIN32
// A user's own folders are closed to others by what they inherit.
namespace {
Problem checkedFolder(const fs::path&) { return std::nullopt; }
}  // namespace

Problem writeNewPrivateFile(const fs::path& path, std::string_view bytes) {
    std::FILE* file = _wfopen(path.c_str(), L"wbx");
    if (!file) return failure("cannot write", path, errno);
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && std::fflush(file) == 0 &&
                         _commit(_fileno(file)) == 0;
    const int error = errno;
    std::fclose(file);
    if (!written) return failure("cannot write", path, error);
    return std::nullopt;
}

std::optional<std::string> readPrivateFile(const fs::path& path) { return readFile(path); }
#else
namespace {
constexpr mode_t others = S_IRWXG | S_IRWXO;

/// Closes itself.
struct Handle {
    int number;
    ~Handle() {
        if (number >= 0) ::close(number);
    }
};

// Makes what is open this user's alone; why it is not.
Problem claim(int handle, const fs::path& path, mode_t kind) {
    struct stat found {};
    if (::fstat(handle, &found) != 0) return failure("cannot look at", path, errno);
    const bool folder = kind == S_IFDIR;
    if ((found.st_mode & S_IFMT) != kind) return path.string() + " is no " + (folder ? "folder" : "plain file");
    if (found.st_uid != ::geteuid()) return path.string() + " belongs to another user";
    if ((found.st_mode & others) == 0) return std::nullopt;
    if (folder && (found.st_mode & S_ISVTX)) return path.string() + " is a folder that users share";
    if (::fchmod(handle, found.st_mode & S_IRWXU) != 0) return failure("cannot close to others:", path, errno);
    // some file systems take the change and forget it
    if (::fstat(handle, &found) != 0 || (found.st_mode & others) != 0)
        return path.string() + " stays open to other users: its file system keeps no permissions";
    return std::nullopt;
}

Problem checkedFolder(const fs::path& folder) {
    struct stat link {};
    if (::lstat(folder.c_str(), &link) == 0 && S_ISLNK(link.st_mode) && link.st_uid != ::geteuid() && link.st_uid != 0)
        return folder.string() + " is a link of another user";
    const Handle handle{::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    if (handle.number < 0) return failure("cannot open the folder", folder, errno);
    return claim(handle.number, folder, S_IFDIR);
}

int writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count > 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return errno;
    }
    return ::fsync(file) == 0 ? 0 : errno;
}
}  // namespace

Problem writeNewPrivateFile(const fs::path& path, std::string_view bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) return failure("cannot write", path, errno);
    auto problem = claim(file, path, S_IFREG);
    const int error = problem ? 0 : writeAll(file, bytes);
    const bool closed = ::close(file) == 0;
    if (problem) return problem;
    if (error != 0 || !closed) return failure("cannot write", path, error != 0 ? error : errno);
    return std::nullopt;
}

std::optional<std::string> readPrivateFile(const fs::path& path) {
    // without waiting, should it be a pipe
    const Handle file{::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)};
    if (file.number < 0 || claim(file.number, path, S_IFREG)) return std::nullopt;
    std::string bytes;
    char part[16384];
    while (true) {
        const ssize_t count = ::read(file.number, part, sizeof part);
        if (count == 0) return bytes;
        if (count > 0)
            bytes.append(part, static_cast<std::size_t>(count));
        else if (errno != EINTR)
            return std::nullopt;
    }
}

int openPrivateFile(const fs::path& path) {
    const int handle = ::open(path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (handle < 0 || !claim(handle, path, S_IFREG)) return handle;
    ::close(handle);
    return -1;
}
#endif

Problem makePrivateFolders(const fs::path& folder) {
    std::error_code error;
    if (folder.empty()) return std::nullopt;
    if (!fs::exists(folder, error)) {
        const fs::path above = folder.parent_path();
        // those above are often open to others by right: a home, /tmp
        if (!above.empty() && !fs::exists(above, error))
            if (auto problem = makePrivateFolders(above)) return problem;
        if (!fs::create_directory(folder, error) && error)
            return "cannot make the folder " + folder.string() + ": " + error.message();
    }
    return checkedFolder(folder);
}

}  // namespace vmr
