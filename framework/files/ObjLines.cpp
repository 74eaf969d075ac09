// SPDX-License-Identifier: Apache-2.0
#include "framework/files/ObjLines.h"

#include "framework/errors/HostError.h"

namespace trovik {

namespace {

/// Room for a face with the maximum number of corners, each with three numbers of ten digits.
constexpr std::size_t maxLineBytes = std::size_t{64} << 20;

}  // namespace

bool ObjLines::Next(std::string_view& statement) {
    joined.clear();
    bool isJoined = false;
    while (NextLine()) {
        const bool goesOn = !current.empty() && current.back() == '\\';
        if (!goesOn && !isJoined) {
            statement = current;
            return true;
        }
        isJoined = true;
        joined += current.substr(0, current.size() - (goesOn ? 1 : 0));
        if (joined.size() > maxLineBytes) {
            throw HostError(Path() + ", line " + std::to_string(line) +
                            ": the statement is too long");
        }
        if (!goesOn) {
            break;
        }
        joined += ' ';
    }
    statement = joined;
    return isJoined;
}

bool ObjLines::NextLine() {
    if (pending.empty() && !file.NextLine(pending, maxLineBytes)) {
        return false;
    }
    ++line;
    const std::size_t lineEnd = pending.find('\r');
    current = pending.substr(0, lineEnd);
    pending.remove_prefix(lineEnd == std::string_view::npos ? pending.size() : lineEnd + 1);
    if (current.find('\0') != std::string_view::npos) {
        throw HostError(Path() + ", line " + std::to_string(line) +
                        ": the line contains a zero byte, so this is not a text file");
    }
    return true;
}

}  // namespace trovik
