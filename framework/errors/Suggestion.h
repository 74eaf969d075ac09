// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <vector>

namespace trovik {

/// The candidate nearest to a misspelt word: at most one edit per three letters of the longer one,
/// and at least one. An edit inserts, deletes or replaces a byte, or swaps two adjacent ones; ASCII
/// case counts as equal. \return the first of the nearest ones; empty if none is that near.
TROVIK_API std::string ClosestWord(const std::string& word,
                                   const std::vector<std::string>& candidates);

/// The end of a message about an unknown word: `; did you mean "X"?` for a near candidate,
/// otherwise
/// `; known are A, B, C`. Empty if there are no candidates.
TROVIK_API std::string Suggestion(const std::string& word,
                                  const std::vector<std::string>& candidates);

}  // namespace trovik
