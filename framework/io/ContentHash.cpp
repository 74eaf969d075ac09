// SPDX-License-Identifier: Apache-2.0
#include "framework/io/ContentHash.h"

#include "framework/errors/HostError.h"
#include "framework/io/InputFile.h"

#include <QCryptographicHash>

#include <algorithm>

namespace trovik {

ContentHash HashFile(const std::string& path, JobControl* job) {
    constexpr std::uint64_t pieceBytes = std::uint64_t{1} << 20;
    InputFile file(path, job);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    while (file.Remaining() > 0) {
        const auto size = static_cast<std::size_t>(std::min(pieceBytes, file.Remaining()));
        const unsigned char* piece = file.Take(size);
        if (piece == nullptr) {
            throw HostError("cannot read " + path + ": it was truncated while it was being read");
        }
        hash.addData(QByteArrayView(piece, static_cast<qsizetype>(size)));
    }
    return {hash.result().toHex().toStdString(), file.Position()};
}

}  // namespace trovik
