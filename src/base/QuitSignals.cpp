#include "base/QuitSignals.h"

#include <csignal>
#include <ctime>
#include <mutex>
#include <utility>
#ifndef _WIN32
#include <unistd.h>

#include <thread>
#endif

namespace vmr {

namespace {
struct Slot {
    std::mutex mutex;
    std::function<void()> handler;

    void call() {
        std::lock_guard lock(mutex);
        if (handler) handler();
    }
    void set(std::function<void()> other) {
        std::lock_guard lock(mutex);
        handler = std::move(other);
    }
};

// Never destroyed: its thread may outlive the statics.
Slot& slot() {
    static Slot& only = *new Slot;
    return only;
}

#ifndef _WIN32
// Set up before the program runs, as a signal's handler needs it: nothing is made at the first call.
int* quitPipe() {
    static constinit int ends[2] = {-1, -1};
    return ends;
}

// Some senders ask twice at once: the process, and the group it is in. That is one request.
extern "C" void noteQuit(int signal) {
    static volatile std::sig_atomic_t asked = 0;  // seconds
    const auto now = static_cast<std::sig_atomic_t>(std::time(nullptr));
    if (asked == 0) asked = now;
    if (now - asked > 1) {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
        return;
    }
    const char byte = 'q';
    [[maybe_unused]] const auto written = ::write(quitPipe()[1], &byte, 1);
}
#else
extern "C" void noteQuit(int signal) {
    std::signal(signal, SIG_DFL);
    slot().call();  // Windows runs console handlers on a thread of their own
}
#endif
}  // namespace

void onQuitRequest(std::function<void()> handler) {
    slot().set(std::move(handler));
    static bool listening = false;
    if (std::exchange(listening, true)) return;
#ifndef _WIN32
    if (::pipe(quitPipe()) != 0) return;
    std::thread([] {
        char byte = 0;
        if (::read(quitPipe()[0], &byte, 1) == 1) slot().call();
    }).detach();
    std::signal(SIGHUP, noteQuit);
    std::signal(SIGPIPE, SIG_IGN);  // who reads the output may leave first
#endif
    std::signal(SIGINT, noteQuit);
    std::signal(SIGTERM, noteQuit);
}

}  // namespace vmr
