// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/PlainText.h"

#include <QRegularExpression>

namespace trovik {

std::string PlainText(QString richText) {
    static const QRegularExpression tag(QStringLiteral("</?[A-Za-z][^<>]*>"));
    richText.replace(tag, QStringLiteral(" "));
    richText.remove(QStringLiteral("%%"));
    return richText.simplified().toStdString();
}

}  // namespace trovik
