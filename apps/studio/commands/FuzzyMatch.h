// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace trovik::studio {

/// Rates how well a text matches what a user types: all letters of the query in their order, not
/// necessarily next to each other, regardless of case. Runs of letters and starts of words count
/// more. Words of the query, separated by spaces, match in any order.
/// \return 0 if the text does not match; otherwise more for a better match. 1 for an empty query.
int FuzzyScore(const QString& query, const QString& text);

}  // namespace trovik::studio
