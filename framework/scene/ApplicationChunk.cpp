// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/ApplicationChunk.h"

#include "framework/errors/HostError.h"
#include "framework/scene/SceneChunks.h"

namespace trovik {

namespace {

constexpr std::size_t maxNameBytes = 256;
constexpr std::size_t maxTotalBytes = std::size_t{64} << 20;

std::size_t TotalBytes(const ApplicationData& data) {
    std::size_t bytes = 0;
    for (const auto& [name, content] : data) bytes += content.size();
    return bytes;
}

}  // namespace

void CheckApplicationData(const ApplicationData& data) {
    for (const auto& [name, content] : data) {
        if (name.empty() || name.size() > maxNameBytes)
            throw HostError("application data: a name has " + std::to_string(name.size()) +
                            " bytes; 1 to " + std::to_string(maxNameBytes) + " are allowed");
    }
    if (TotalBytes(data) > maxTotalBytes)
        throw HostError("application data: " + std::to_string(TotalBytes(data)) +
                        " bytes; at most " + std::to_string(maxTotalBytes) + " are allowed");
}

void WriteApplicationChunk(SceneStream& stream, const ApplicationData::value_type& entry) {
    WriteList(stream, std::vector<char>(entry.first.begin(), entry.first.end()));
    WriteList(stream, entry.second);
}

void ReadApplicationChunk(SceneStream& stream, ApplicationData& data) {
    const std::vector<char> letters = ReadList<char>(stream);
    const std::string name(letters.begin(), letters.end());
    if (data.count(name) != 0)
        SceneStream::Refuse(QStringLiteral("the application data \"%1\" occurs twice")
                                .arg(QString::fromStdString(name)));
    data[name] = ReadList<uint8_t>(stream);
    try {
        CheckApplicationData(data);
    } catch (const HostError& refused) {
        SceneStream::Refuse(QString::fromStdString(refused.what()));
    }
}

}  // namespace trovik
