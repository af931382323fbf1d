// The commands that a person or a script types, one a line.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "app/Program.h"

namespace vmr {

/// Runs command lines on the main thread; each is answered by one line, "[cmd] ok …" or "[cmd] error: …", at once or,
/// for sign-in, when it is over. Blank lines are not answered.
class ShellCommands {
 public:
    ShellCommands(Program& program, std::function<void()> quit) : program_(program), quit_(std::move(quit)) {}

    void run(const std::string& line);

 private:
    using Answer = std::string;
    Answer carryOut(const std::string& name, std::string_view rest);
    Answer open(std::string_view rest);
    Answer symbol(const std::string& sym);
    Answer timeframe(const std::string& minutes);
    Answer expiration(const std::string& iso);
    Answer set(std::string_view rest);
    Answer state(const std::string& file);
    void signIn(std::string_view rest);
    Answer relay(std::string_view rest);

    Program& program_;
    std::function<void()> quit_;
};

/// Reads standard input on a thread of its own and hands each line to `take` on `loop`, for as long as `loop` lives
/// (`stop` ends that). The end of the input ends nothing.
class LineReader {
 public:
    LineReader(MainLoop& loop, std::function<void(const std::string&)> take);
    ~LineReader();
    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

 private:
    struct Shared;
    std::shared_ptr<Shared> shared_;
};

}  // namespace vmr
