// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace trovik::studio {

/// Rates how well a text matches a query: the text must contain all letters of the query in order,
/// not necessarily adjacent, regardless of case. Consecutive letters and word starts score higher.
/// The words of the query, separated by spaces, match in any order.
/// \return 0 if the text does not match, otherwise a score that is higher for better matches; 1 for
/// an empty query.
int FuzzyScore(const QString& query, const QString& text);

}  // namespace trovik::studio
