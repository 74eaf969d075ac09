// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <string>
#include <vector>

namespace trovik {

/// Returns the candidate nearest to a misspelt word. A candidate is accepted if it differs by at
/// most one edit per three letters of the longer word; one edit is always allowed. An edit inserts,
/// deletes or replaces a byte, or swaps two adjacent bytes. ASCII case is ignored. These are the
/// kinds of errors described in Damerau: "A Technique for Computer Detection and Correction of
/// Spelling Errors" (1964).
/// \return the first of the nearest candidates, or an empty string if no candidate is near enough.
TROVIK_API std::string ClosestWord(const std::string& word,
                                   const std::vector<std::string>& candidates);

/// Returns the suffix for a message about an unknown word: `; did you mean "X"?` if there is a near
/// candidate, otherwise `; known names: A, B, C`. Returns an empty string if there are no
/// candidates.
TROVIK_API std::string Suggestion(const std::string& word,
                                  const std::vector<std::string>& candidates);

}  // namespace trovik
