#include "app/LineReader.h"

#include <iostream>
#include <mutex>
#include <thread>

#include "base/StandardInput.h"

namespace vmr {

struct LineReader::Shared {
    std::mutex mutex;
    MainLoop* loop;
    std::function<void(const std::string&)> take;
};

LineReader::LineReader(MainLoop& loop, std::function<void(const std::string&)> take)
    : shared_(std::make_shared<Shared>()) {
    shared_->loop = &loop;
    shared_->take = std::move(take);
    readStandardInputUnlocked();
    // the thread may wait for input for ever, so it is left behind when the reader ends
    std::thread([shared = shared_] {
        for (std::string line; std::getline(std::cin, line);) {
            std::lock_guard lock(shared->mutex);
            if (!shared->loop) return;
            shared->loop->post([shared, line] {
                if (shared->take) shared->take(line);
            });
        }
    }).detach();
}

LineReader::~LineReader() {
    std::lock_guard lock(shared_->mutex);
    shared_->loop = nullptr;
    shared_->take = nullptr;
}

}  // namespace vmr
