// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace trovik::test {

/// An .npy file: its bytes, its header text and its values.
struct NpyArray {
    explicit NpyArray(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream text;
        if (!file || !(text << file.rdbuf())) throw std::runtime_error("cannot read " + path);
        bytes = text.str();
        if (bytes.compare(0, 8, std::string("\x93NUMPY\x01\x00", 8)) != 0)
            throw std::runtime_error(path + " is not an .npy file of version 1.0");
        headerBytes = 10u + static_cast<uint8_t>(bytes[8]) + 256u * static_cast<uint8_t>(bytes[9]);
        header = bytes.substr(10, headerBytes - 10);
    }

    std::string Between(const std::string& before, const std::string& after) const {
        const std::size_t start = header.find(before) + before.size();
        return header.substr(start, header.find(after, start) - start);
    }
    std::string Type() const { return Between("'descr': ", ", 'fortran_order'"); }
    std::string Shape() const { return Between("'shape': ", ", }"); }

    template <typename T>
    std::vector<T> Values() const {
        std::vector<T> values((bytes.size() - headerBytes) / sizeof(T));
        std::memcpy(values.data(), bytes.data() + headerBytes, values.size() * sizeof(T));
        return values;
    }

    std::string bytes;
    std::size_t headerBytes = 0;
    std::string header;
};

}  // namespace trovik::test
