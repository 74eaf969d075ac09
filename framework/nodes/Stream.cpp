// SPDX-License-Identifier: Apache-2.0
#include "host/Stream.h"

#include <QByteArray>

namespace trovik {

Stream::~Stream() = default;

void Stream::Transfer(QString& text) {
    QByteArray utf8 = text.toUtf8();
    auto bytes = static_cast<uint32_t>(utf8.size());
    Transfer(bytes);
    if (IsStoring()) {
        WriteElements(utf8.constData(), 1, bytes);
        return;
    }
    // The text is read in pieces, so that an invalid length causes an end-of-file error instead of
    // a huge allocation.
    utf8.clear();
    char piece[4096];
    for (uint32_t left = bytes; left > 0;) {
        const uint32_t count = left < sizeof(piece) ? left : static_cast<uint32_t>(sizeof(piece));
        ReadElements(piece, 1, count);
        utf8.append(piece, static_cast<int>(count));
        left -= count;
    }
    text = QString::fromUtf8(utf8);
}

}  // namespace trovik
