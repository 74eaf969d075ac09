// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace trovik {

/// A temporary file that stores byte sequences. It is unlinked as soon as it is open, so it
/// disappears when the program ends, even after a crash. Fill and Read are thread-safe; all other
/// functions must be called by one thread at a time.
class TROVIK_API SpillFile {
public:
    /// The location of a sequence, and the checksum that verifies its bytes.
    struct Extent {
        uint64_t start = 0;
        uint64_t length = 0;
        uint32_t checksum = 0;
    };

    /// \throw HostError that names the folder and the system's reason.
    explicit SpillFile(const std::string& folder);
    ~SpillFile();
    SpillFile(const SpillFile&) = delete;
    SpillFile& operator=(const SpillFile&) = delete;

    /// Reserves this number of bytes.
    Extent Reserve(uint64_t length);
    /// Writes the bytes to a reserved extent and stores their checksum in it.
    /// \throw HostError that names the folder and the system's reason, such as a full disk. Earlier
    /// data is then intact, and the caller must free the extent.
    void Fill(Extent& extent, const std::vector<uint8_t>& bytes) const;
    /// \throw HostError "undo file in FOLDER: byte N: reason" if the bytes cannot be read or differ
    /// from those that were written.
    std::vector<uint8_t> Read(const Extent& extent) const;
    /// Frees the space that a sequence occupies.
    void Free(const Extent& extent);

    /// Total size of the stored sequences in bytes.
    uint64_t Bytes() const { return used; }
    /// A path through which this process can open the file, for inspection.
    std::string OpenPath() const;

private:
    std::string folder;
    int file = -1;
    uint64_t used = 0;
    uint64_t end = 0;
    /// Maps the start of each gap to its length.
    std::map<uint64_t, uint64_t> gaps;
};

}  // namespace trovik
