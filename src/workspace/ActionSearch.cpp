#include "workspace/ActionSearch.h"

#include <algorithm>
#include <cctype>
#include <numeric>

namespace vmr {

namespace {
constexpr int none = -1;
constexpr int within = 100;  // worse than any beginning

bool partsWords(char c) { return !std::isalnum(static_cast<unsigned char>(c)) && static_cast<unsigned char>(c) < 0x80; }

std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> out(1);
    for (const char c : text) {
        if (!partsWords(c))
            out.back() += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        else if (!out.back().empty())
            out.emplace_back();
    }
    if (out.back().empty()) out.pop_back();
    return out;
}

// The place of the word that it begins, and more where it is not the whole of it.
int rankOf(const std::string& typed, const std::vector<std::string>& words) {
    int best = none;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const auto at = words[i].find(typed);
        if (at == std::string::npos || (at > 0 && typed.size() < 3)) continue;
        const int rank = 2 * static_cast<int>(i) + (words[i].size() > typed.size() ? 1 : 0) + (at > 0 ? within : 0);
        if (best == none || rank < best) best = rank;
    }
    return best;
}
}  // namespace

int searchRank(std::string_view typed, std::string_view text) {
    const std::vector<std::string> words = wordsOf(text);
    int sum = 0;
    for (const std::string& word : wordsOf(typed)) {
        const int rank = rankOf(word, words);
        if (rank == none) return none;
        sum += rank;
    }
    return sum;
}

std::vector<std::size_t> searchRows(std::string_view typed, std::span<const std::string> rows) {
    std::vector<int> ranks(rows.size());
    std::vector<std::size_t> out;
    for (std::size_t i = 0; i < rows.size(); ++i)
        if ((ranks[i] = searchRank(typed, rows[i])) != none) out.push_back(i);
    std::stable_sort(out.begin(), out.end(), [&](std::size_t a, std::size_t b) { return ranks[a] < ranks[b]; });
    return out;
}

}  // namespace vmr
