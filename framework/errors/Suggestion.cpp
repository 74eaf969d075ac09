// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Suggestion.h"

#include <algorithm>

namespace trovik {

namespace {

/// Longer words are ignored, because they are unlikely to be misspelt names and the cost grows
/// quadratically with the length.
constexpr std::size_t maxWordLength = 64;

char Lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// Returns the optimal string alignment distance. Uses the recurrence of Wagner, Fischer: "The
/// String-to-String Correction Problem" (1974), with swaps of adjacent letters as a fourth kind of
/// edit.
std::size_t EditDistance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> cost(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) cost[i][0] = i;
    for (std::size_t j = 0; j <= b.size(); ++j) cost[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const bool same = Lower(a[i - 1]) == Lower(b[j - 1]);
            cost[i][j] = std::min(
                {cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + (same ? 0u : 1u)});
            const bool swapped = i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) &&
                                 Lower(a[i - 2]) == Lower(b[j - 1]);
            if (swapped) cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
        }
    }
    return cost[a.size()][b.size()];
}

}  // namespace

std::string ClosestWord(const std::string& word, const std::vector<std::string>& candidates) {
    std::string closest;
    if (word.empty() || word.size() > maxWordLength) return closest;
    std::size_t least = maxWordLength;
    for (const std::string& candidate : candidates) {
        if (candidate.size() > maxWordLength) continue;
        const std::size_t allowed =
            std::max<std::size_t>(1, std::max(word.size(), candidate.size()) / 3);
        const std::size_t distance = EditDistance(word, candidate);
        if (distance > allowed || distance >= least) continue;
        least = distance;
        closest = candidate;
    }
    return closest;
}

std::string Suggestion(const std::string& word, const std::vector<std::string>& candidates) {
    const std::string closest = ClosestWord(word, candidates);
    if (!closest.empty()) return "; did you mean \"" + closest + "\"?";
    std::string list;
    for (const std::string& name : candidates)
        list += (list.empty() ? "; known names: " : ", ") + name;
    return list;
}

}  // namespace trovik
