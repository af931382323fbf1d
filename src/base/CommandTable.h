// The commands that a person or a script types, one a line, as a table: what they are called, need and do.
#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vmr {

/// What stands in a line, word by word; blanks, tabs and line ends part them. Refers to the line.
class CommandWords {
 public:
    explicit CommandWords(std::string_view text);

    /// Takes the first word off; empty when none is left.
    std::string next();
    /// What has not been taken yet, without blanks around it.
    std::string_view rest() const { return rest_; }
    bool empty() const { return rest_.empty(); }
    /// All words that have not been taken yet.
    std::vector<std::string> all() const;

 private:
    std::string_view rest_;
};

/// What a command answers: a line "ok …" or "error: …", an empty text when the answer comes later, or nothing at all
/// when its arguments cannot be read.
using CommandAnswer = std::optional<std::string>;

/// One row of the table.
struct Command {
    static constexpr std::size_t restOfLine = std::numeric_limits<std::size_t>::max();

    std::string name;
    std::string arguments;                            ///< as the help shows them; empty for none
    std::size_t leastWords = 0, mostWords = 0;        ///< that it takes; `restOfLine` for whatever comes
    std::function<CommandAnswer(CommandWords&)> run;  ///< gets what follows the name
    std::string wrongArguments{};                     ///< the answer to those, instead of the table's
};

/// Rows are tried by name, in one table; the help lists them in their order. One thread.
class CommandTable {
 public:
    /// How one table speaks, without "ok " and "error: ".
    struct Wording {
        std::string separator;                                              ///< between the rows of the help
        std::function<std::string(const std::string& name)> unknown;        ///< no such command
        std::function<std::string(const Command& command)> wrongArguments;  ///< where the row has no text of its own
    };
    explicit CommandTable(Wording wording) : wording_(std::move(wording)) {}

    /// Adds a row. A second one of the same name is never reached.
    void add(Command command) { rows_.push_back(std::move(command)); }

    /// Carries out one line that is not blank; empty when the answer comes later.
    std::string run(std::string_view line) const;

    /// Every row, with its arguments.
    std::string help() const;

 private:
    Wording wording_;
    std::vector<Command> rows_;
};

}  // namespace vmr
