#include "base/FileLock.h"

#include <chrono>
#include <thread>

#include "base/PrivateFile.h"
#ifdef _WIN32
#include <windows.h>
#else
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#endif

namespace vmr {

FileLock::FileLock(const std::filesystem::path& file, double patience) {
    using namespace std::chrono;
    if (makePrivateFolders(file.parent_path())) return;
    const auto end = steady_clock::now() + duration<double>(patience);
    for (tryOnce(file); state_ == State::heldElsewhere && steady_clock::now() < end; tryOnce(file))
        std::this_thread::sleep_for(milliseconds(2));
}

#ifdef _WIN32
void FileLock::tryOnce(const std::filesystem::path& file) {
    const HANDLE handle = ::CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_ALWAYS,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) return;
    OVERLAPPED whole{};
    if (::LockFileEx(handle, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &whole)) {
        handle_ = reinterpret_cast<std::intptr_t>(handle);
        state_ = State::held;
        return;
    }
    state_ = ::GetLastError() == ERROR_LOCK_VIOLATION ? State::heldElsewhere : State::unavailable;
    ::CloseHandle(handle);
}

FileLock::~FileLock() {
    if (handle_ != none) ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}
#else
void FileLock::tryOnce(const std::filesystem::path& file) {
    const int handle = openPrivateFile(file);
    if (handle < 0) return;
    int result;
    do result = ::flock(handle, LOCK_EX | LOCK_NB);
    while (result != 0 && errno == EINTR);
    if (result == 0) {
        handle_ = handle;
        state_ = State::held;
        return;
    }
    state_ = errno == EWOULDBLOCK ? State::heldElsewhere : State::unavailable;
    ::close(handle);
}

FileLock::~FileLock() {
    if (handle_ != none) ::close(static_cast<int>(handle_));
}
#endif

}  // namespace vmr
