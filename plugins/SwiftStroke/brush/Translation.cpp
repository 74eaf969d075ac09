// SPDX-License-Identifier: Apache-2.0
#include "brush/Translation.h"

#include <QCoreApplication>

namespace trovik {

QString Translate(const char* text, const char* comment) {
    return QCoreApplication::translate("SwiftStroke", text, comment);
}

}  // namespace trovik
