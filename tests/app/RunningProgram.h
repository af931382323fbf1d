// The program as a process that a test speaks to through pipes.
#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/Clock.h"

extern char** environ;

namespace vmr {

class RunningProgram {
 public:
    /// Starts it with `home` as the person's home and without settings from the environment.
    RunningProgram(const std::filesystem::path& home, std::vector<std::string> words) {
        int in[2], out[2];
        if (::pipe(in) != 0 || ::pipe(out) != 0) std::abort();
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], 0);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        for (const int end : {in[0], in[1], out[0], out[1]}) posix_spawn_file_actions_addclose(&actions, end);
        std::vector<std::string> environment{"HOME=" + home.string()};
        for (char** at = environ; *at; ++at) {
            const std::string entry = *at;
            if (!entry.starts_with("HOME=") && !entry.starts_with("XDG_") && !entry.starts_with("VMR_"))
                environment.push_back(entry);
        }
        words.insert(words.begin(), VMR_PROGRAM);
        auto pointers = pointersTo(environment), argv = pointersTo(words);
        EXPECT_EQ(::posix_spawn(&pid_, VMR_PROGRAM, &actions, nullptr, argv.data(), pointers.data()), 0);
        posix_spawn_file_actions_destroy(&actions);
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
    }
    ~RunningProgram() {
        if (pid_ > 0) kill();
        ::close(input_);
        ::close(output_);
    }
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;

    void kill() {
        ::kill(pid_, SIGKILL);
        wait();
    }
    /// Its status as `waitpid` gives it, once it has ended.
    int wait() {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        pid_ = 0;
        return status;
    }
    void say(const std::string& line) { EXPECT_EQ(::write(input_, line.data(), line.size()), ssize_t(line.size())); }
    /// Waits at most `seconds` for a whole line.
    std::optional<std::string> line(double seconds) {
        const double until = clock_.monotonic() + seconds;
        while (true) {
            if (const auto end = text_.find('\n'); end != std::string::npos) {
                std::string first = text_.substr(0, end);
                text_.erase(0, end + 1);
                return first;
            }
            const double rest = until - clock_.monotonic();
            pollfd waiting{output_, POLLIN, 0};
            if (rest <= 0 || ::poll(&waiting, 1, static_cast<int>(rest * 1000) + 1) <= 0) return std::nullopt;
            char buffer[4096];
            const auto count = ::read(output_, buffer, sizeof buffer);
            if (count <= 0) return std::nullopt;
            text_.append(buffer, static_cast<std::size_t>(count));
        }
    }

 private:
    static std::vector<char*> pointersTo(std::vector<std::string>& texts) {
        std::vector<char*> out;
        for (auto& text : texts) out.push_back(text.data());
        out.push_back(nullptr);
        return out;
    }

    SystemClock clock_;
    pid_t pid_ = 0;
    int input_ = -1, output_ = -1;
    std::string text_;
};

}  // namespace vmr
