// SPDX-License-Identifier: Apache-2.0
#include "commands/FuzzyMatch.h"

#include <QStringList>

#include <algorithm>

namespace trovik::studio {

namespace {

constexpr int perLetter = 4, wordStart = 12, inRun = 10, textStart = 8;

bool StartsWord(const QString& text, qsizetype at) {
    return at == 0 || !text[at - 1].isLetterOrNumber();
}

/// Scores how well `word` matches `text`; 0 if it does not.
int WordScore(const QString& word, const QString& text) {
    // A contiguous match of a query word scores higher than scattered letters.
    int best = 0;
    for (qsizetype at = text.indexOf(word); at >= 0; at = text.indexOf(word, at + 1)) {
        int score = static_cast<int>(word.size()) * (perLetter + inRun);
        if (StartsWord(text, at)) score += wordStart + (at == 0 ? textStart : 0);
        best = std::max(best, score);
    }
    if (best > 0) return best;
    int score = 0;
    qsizetype previous = -2;
    qsizetype at = 0;
    for (const QChar letter : word) {
        // Prefers the start of a later word over the next occurrence inside a word.
        qsizetype found = -1;
        for (qsizetype i = at; i < text.size(); ++i) {
            if (text[i] != letter) continue;
            if (found < 0) found = i;
            if (i == previous + 1 || StartsWord(text, i)) {
                found = i;
                break;
            }
        }
        if (found < 0) return 0;
        score += perLetter;
        if (found == previous + 1) score += inRun;
        if (StartsWord(text, found)) score += wordStart;
        previous = found;
        at = found + 1;
    }
    // Letters scattered inside words do not count as a match.
    return score >= static_cast<int>(word.size()) * (perLetter + 4) ? score : 0;
}

}  // namespace

int FuzzyScore(const QString& query, const QString& text) {
    const QString folded = text.toLower();
    int score = 1;
    for (const QString& word : query.toLower().split(u' ', Qt::SkipEmptyParts)) {
        const int part = WordScore(word, folded);
        if (part == 0) return 0;
        score += part;
    }
    return score;
}

}  // namespace trovik::studio
