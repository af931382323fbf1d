#include "base/CommandTable.h"

#include <algorithm>

namespace vmr {

namespace {
constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}
}  // namespace

CommandWords::CommandWords(std::string_view text) : rest_(trimmed(text)) {}

std::string CommandWords::next() {
    const auto end = std::min(rest_.find_first_of(blanks), rest_.size());
    std::string word(rest_.substr(0, end));
    rest_ = trimmed(rest_.substr(end));
    return word;
}

std::vector<std::string> CommandWords::all() const {
    std::vector<std::string> words;
    for (CommandWords left = *this; !left.empty();) words.push_back(left.next());
    return words;
}

std::string CommandTable::run(std::string_view line) const {
    CommandWords words(line);
    const std::string name = words.next();
    const auto row = std::find_if(rows_.begin(), rows_.end(), [&](const Command& one) { return one.name == name; });
    if (row == rows_.end()) return "error: " + wording_.unknown(name);
    const std::size_t count = words.all().size();
    CommandAnswer answer;
    if (count >= row->leastWords && count <= row->mostWords) answer = row->run(words);
    if (answer) return *answer;
    return "error: " + (row->wrongArguments.empty() ? wording_.wrongArguments(*row) : row->wrongArguments);
}

std::string CommandTable::help() const {
    std::string text;
    for (const Command& row : rows_) {
        if (!text.empty()) text += wording_.separator;
        text += row.name;
        if (!row.arguments.empty()) text += " " + row.arguments;
    }
    return text;
}

}  // namespace vmr
