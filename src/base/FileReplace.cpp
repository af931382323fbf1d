#include "base/FileReplace.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <system_error>
#ifdef _WIN32
#include <io.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace vmr {

namespace fs = std::filesystem;

namespace {
std::string failure(const char* what, const fs::path& path, int error) {
    return std::string(what) + " " + path.string() + ": " + std::strerror(error);
}

#ifdef _WIN32
std::optional<std::string> writeFlushed(const fs::path& path, std::string_view bytes) {
    std::FILE* file = _wfopen(path.c_str(), L"wb");
    if (!file) return failure("cannot write", path, errno);
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && std::fflush(file) == 0 &&
                         _commit(_fileno(file)) == 0;
    const int error = errno;
    std::fclose(file);
    if (!written) return failure("cannot write", path, error);
    return std::nullopt;
}
void flushFolder(const fs::path&) {}
#else
std::optional<std::string> writeFlushed(const fs::path& path, std::string_view bytes) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (file < 0) return failure("cannot write", path, errno);
    ::fchmod(file, S_IRUSR | S_IWUSR);
    int error = 0;
    for (std::size_t done = 0; done < bytes.size() && error == 0;) {
        const ssize_t count = ::write(file, bytes.data() + done, bytes.size() - done);
        if (count > 0)
            done += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            error = errno;
    }
    if (error == 0 && ::fsync(file) != 0) error = errno;
    if (::close(file) != 0 && error == 0) error = errno;
    if (error != 0) return failure("cannot write", path, error);
    return std::nullopt;
}

void flushFolder(const fs::path& folder) {
    const int handle = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    ::fsync(handle);
    ::close(handle);
}
#endif
}  // namespace

std::optional<std::string> makePrivateFolders(const fs::path& folder) {
    std::error_code error;
    if (folder.empty() || fs::exists(folder, error)) return std::nullopt;
    if (auto problem = makePrivateFolders(folder.parent_path())) return problem;
    if (!fs::create_directory(folder, error) && error)
        return "cannot make the folder " + folder.string() + ": " + error.message();
    fs::permissions(folder, fs::perms::owner_all, error);
    return std::nullopt;
}

std::optional<std::string> replaceFile(const fs::path& path, std::string_view bytes) {
    const fs::path folder = path.parent_path();
    if (auto problem = makePrivateFolders(folder)) return problem;
    fs::path beside = path;
    beside += ".new";
    std::error_code error;
    if (auto problem = writeFlushed(beside, bytes)) {
        fs::remove(beside, error);
        return problem;
    }
    fs::rename(beside, path, error);
    if (error) {
        const std::string problem = "cannot replace " + path.string() + ": " + error.message();
        fs::remove(beside, error);
        return problem;
    }
    flushFolder(folder);
    return std::nullopt;
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
