// The program as a process that a test speaks to through pipes.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/Clock.h"
#include "base/Uuid.h"

namespace vmr {

class RunningProgram {
 public:
    /// The person's home and the current folder; it goes with this object.
    const std::filesystem::path home =
        std::filesystem::temp_directory_path() / ("velmora-run-" + UuidSource().next().text());

    /// Starts it without settings from the environment but for these.
    explicit RunningProgram(std::vector<std::string> words,
                            const std::vector<std::pair<std::string, std::string>>& variables = {}) {
        std::filesystem::create_directories(home);
        int in[2], out[2];
        EXPECT_EQ(::pipe2(in, O_CLOEXEC) | ::pipe2(out, O_CLOEXEC), 0);
        words.insert(words.begin(), VMR_PROGRAM);
        std::vector<char*> argv;
        for (auto& word : words) argv.push_back(word.data());
        argv.push_back(nullptr);
        auto environment = environmentOf(home, variables);
        std::vector<char*> envp;
        for (auto& setting : environment) envp.push_back(setting.data());
        envp.push_back(nullptr);
        // the child may only call what is safe after a fork of a process with threads: nothing that allocates
        if ((pid_ = ::fork()) == 0) {
            ::dup2(in[0], 0);
            for (const int told : {1, 2}) ::dup2(out[1], told);
            if (::chdir(home.c_str()) == 0) ::execve(VMR_PROGRAM, argv.data(), envp.data());
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        output_ = out[0];
    }
    ~RunningProgram() {
        if (pid_ > 0) end(SIGKILL);
        ::close(input_);
        ::close(output_);
        std::error_code ignored;
        std::filesystem::remove_all(home, ignored);
    }
    RunningProgram(const RunningProgram&) = delete;

    /// Its exit status once it has ended, on its own or by the signal; one that ended it counts as 128 and its number.
    int end(int signal = 0) {
        int status = 0;
        ::kill(pid_, signal);
        ::waitpid(pid_, &status, 0);
        pid_ = 0;
        return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    pid_t pid() const { return pid_; }
    void say(const std::string& line) {
        EXPECT_EQ(::write(input_, (line + "\n").c_str(), line.size() + 1), ssize_t(line.size() + 1));
    }
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
    /// Says it, and waits for a line that begins with "[cmd] "; nothing when none comes for `seconds`.
    std::optional<std::string> ask(const std::string& command, double seconds = 20) {
        say(command);
        auto answer = line(seconds);
        while (answer && !answer->starts_with("[cmd] ")) answer = line(seconds);
        return answer;
    }
    /// A file below its home as JSON.
    nlohmann::json file(const std::string& name) const {
        std::ifstream in(home / name);
        return nlohmann::json::parse(in, nullptr, false);
    }

 private:
    /// This process's environment at another home, with these settings of the program in place of its own.
    static std::vector<std::string> environmentOf(const std::filesystem::path& home,
                                                  const std::vector<std::pair<std::string, std::string>>& variables) {
        std::vector<std::string> settings{"HOME=" + home.string()};
        // of a name that is given twice the last one counts, and a program finds the first
        for (auto at = variables.rbegin(); at != variables.rend(); ++at)
            settings.push_back(at->first + "=" + at->second);
        for (char** at = environ; *at; ++at) {
            const std::string_view setting = *at;
            if (!setting.starts_with("XDG_") && !setting.starts_with("VMR_") && !setting.starts_with("HOME="))
                settings.emplace_back(setting);
        }
        return settings;
    }

    SystemClock clock_;
    pid_t pid_ = 0;
    int input_ = -1, output_ = -1;
    std::string text_;
};

}  // namespace vmr
