// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Stream.h"

#include <cstring>
#include <stdexcept>
#include <vector>

namespace trovik::test {

/// An in-memory scene that has the same version number for all classes.
class TestStream : public Stream {
public:
    explicit TestStream(int version) : classVersion(version) {}

    int ClassVersion(const ClassDesc*) const override { return classVersion; }
    bool IsFormatAtLeast(uint32_t) const override { return true; }
    bool IsStoring() const override { return storing; }
    void ReadElements(void* elements, uint32_t elementSize, uint64_t count) override {
        const std::size_t size = elementSize * count;
        if (position + size > bytes.size()) throw std::out_of_range("read beyond the end");
        std::memcpy(elements, bytes.data() + position, size);
        position += size;
    }
    void WriteElements(const void* elements, uint32_t elementSize, uint64_t count) override {
        const auto* first = static_cast<const uint8_t*>(elements);
        bytes.insert(bytes.end(), first, first + elementSize * count);
    }
    void ReadStore(Store<uint32_t>&) override {}
    void WriteStore(const Store<uint32_t>&) override {}

    /// Switches the stream to reading the data that was written.
    void Rewind() {
        storing = false;
        position = 0;
    }

    int classVersion;
    bool storing = true;
    std::vector<uint8_t> bytes;
    std::size_t position = 0;
};

}  // namespace trovik::test
