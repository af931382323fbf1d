#include "base/QuitSignals.h"

#include <csignal>
#include <utility>
#ifndef _WIN32
#include <unistd.h>

#include <thread>
#endif

namespace vmr {

namespace {
std::function<void()>& handlerSlot() {
    static std::function<void()> handler;
    return handler;
}

#ifndef _WIN32
int quitPipe[2] = {-1, -1};

extern "C" void noteQuit(int signal) {
    std::signal(signal, SIG_DFL);
    const char byte = 'q';
    [[maybe_unused]] const auto written = ::write(quitPipe[1], &byte, 1);
}
#else
extern "C" void noteQuit(int signal) {
    std::signal(signal, SIG_DFL);
    handlerSlot()();  // Windows runs console handlers on a thread of their own
}
#endif
}  // namespace

void onQuitRequest(std::function<void()> handler) {
    handlerSlot() = std::move(handler);
#ifndef _WIN32
    if (::pipe(quitPipe) != 0) return;
    std::thread([] {
        char byte = 0;
        if (::read(quitPipe[0], &byte, 1) == 1) handlerSlot()();
    }).detach();
#endif
    std::signal(SIGINT, noteQuit);
    std::signal(SIGTERM, noteQuit);
}

}  // namespace vmr
