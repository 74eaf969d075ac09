// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

class QListWidget;
class QWidget;

namespace trovik::studio {

/// \file
/// Short lists of named rows in panels that scroll as a whole.

/// A list without keyboard focus. Only code can start editing a row; the line edit of a row returns
/// the focus to the viewport when it closes.
QListWidget* MakeRowList(const QString& name, const QString& tip, QWidget* parent);
/// Makes the list as high as its rows, up to a limit beyond which it scrolls.
void FitToRows(QListWidget* list, int maxRows = 8);

}  // namespace trovik::studio
