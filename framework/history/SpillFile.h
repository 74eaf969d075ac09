// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace trovik {

/// A temporary file of byte runs. It has no name in its folder from the moment it is opened, so
/// that it is gone when the program ends, however that happens. Fill and Read may run beside
/// anything; the rest is for one thread at a time.
class TROVIK_API SpillFile {
public:
    /// Where a run lies. Its bytes are known again by their checksum.
    struct Place {
        uint64_t start = 0;
        uint64_t length = 0;
        uint32_t checksum = 0;
    };

    /// \throw HostError naming the folder and the system's reason.
    explicit SpillFile(const std::string& folder);
    ~SpillFile();
    SpillFile(const SpillFile&) = delete;
    SpillFile& operator=(const SpillFile&) = delete;

    /// Room for so many bytes.
    Place Reserve(uint64_t length);
    /// Writes the bytes of a reserved place and notes their checksum in it. \throw HostError naming
    /// the folder and the system's reason, such as a full disk; what was written before is as it
    /// was, and the place is to be freed.
    void Fill(Place& place, const std::vector<uint8_t>& bytes) const;
    /// \throw HostError "undo file in FOLDER: byte N: reason" when the bytes cannot be read or are
    /// not those that were written.
    std::vector<uint8_t> Read(const Place& place) const;
    /// Gives the room of a run back.
    void Free(const Place& place);

    /// Bytes of the runs that are there.
    uint64_t Bytes() const { return used; }
    /// The file as this process can open it again, for looking at it.
    std::string OpenPath() const;

private:
    std::string folder;
    int file = -1;
    uint64_t used = 0;
    uint64_t end = 0;
    /// Gaps by their start: lengths.
    std::map<uint64_t, uint64_t> gaps;
};

}  // namespace trovik
