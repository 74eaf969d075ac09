// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "framework/files/PlyHeader.h"
#include "framework/io/InputFile.h"
#include "framework/io/NumberText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>

/// \file Readers for the data after the header of a PLY file, one class per encoding. The classes
/// have the same members. Each number is read as the type that the header declares for its
/// property.
namespace trovik {

/// The element and index of the current row, for error messages.
struct PlyRow {
    const PlyElement* element = nullptr;
    std::uint64_t number = 0;
};

/// \throw HostError with the file, the location and the row.
[[noreturn]] inline void RefuseRow(const InputFile& file,
                                   const std::string& location,
                                   const PlyRow& row,
                                   const std::string& reason) {
    throw HostError(file.Path() + ", " + location + ": element '" + row.element->name + "', row " +
                    std::to_string(row.number) + " of " + std::to_string(row.element->count) +
                    " (counted from 0): " + reason);
}

/// Reads numbers from text, separated by white space.
class PlyTextBody {
public:
    PlyTextBody(InputFile& plyFile, const PlyHeader& header)
        : file(plyFile), line(header.lineCount) {}

    float Float(PlyType, const PlyRow& row) {
        const std::string_view word = Word(row);
        float value = 0.0f;
        if (!ParseFloat(word, value)) {
            RefuseWord(word, "a number", row);
        }
        return value;
    }

    std::int64_t Whole(PlyType, const PlyRow& row) {
        const std::string_view word = Word(row);
        std::int64_t value = 0;
        const char* const end = word.data() + word.size();
        const auto [used, error] = std::from_chars(word.data(), end, value);
        if (used != end || error != std::errc()) {
            RefuseWord(word, "a whole number", row);
        }
        return value;
    }

    void Skip(PlyType, std::uint64_t count, const PlyRow& row) {
        for (std::uint64_t i = 0; i < count; ++i) {
            Word(row);
        }
    }

    /// Checks that the rest of the file is long enough for a list of this many numbers.
    /// \throw HostError if it is not.
    void CheckLength(PlyType, std::uint64_t count, const PlyRow& row) {
        // Each number takes at least one digit and one blank, but the last number of the file needs
        // no blank.
        if (count > (rest.size() + file.Remaining() + 1) / 2) {
            RefuseEnd(row);
        }
    }

    std::string Location() const { return "line " + std::to_string(line); }

private:
    static constexpr std::string_view Blanks = " \t\r\v\f";
    /// Enough for the longest accepted face, with ten digits per number.
    static constexpr std::size_t MaxLineBytes = std::size_t{64} << 20;

    std::string_view Word(const PlyRow& row) {
        for (;;) {
            rest.remove_prefix(std::min(rest.find_first_not_of(Blanks), rest.size()));
            if (!rest.empty()) {
                break;
            }
            if (!file.NextLine(rest, MaxLineBytes)) {
                RefuseEnd(row);
            }
            ++line;
        }
        const std::string_view word = rest.substr(0, rest.find_first_of(Blanks));
        rest.remove_prefix(word.size());
        return word;
    }

    [[noreturn]] void RefuseEnd(const PlyRow& row) const {
        RefuseRow(file, Location(), row, "the file ends too early");
    }

    [[noreturn]] void RefuseWord(std::string_view word,
                                 const char* wanted,
                                 const PlyRow& row) const {
        std::string quoted;
        for (const char letter : word.substr(0, 40)) {
            quoted += letter >= ' ' && letter <= '~' ? letter : '?';
        }
        RefuseRow(file, Location(), row, "'" + quoted + "' is not " + wanted);
    }

    InputFile& file;
    std::uint64_t line;
    std::string_view rest;
};

/// Reads numbers from bytes, in either byte order.
template <std::endian order>
class PlyBinaryBody {
public:
    PlyBinaryBody(InputFile& plyFile, const PlyHeader&) : file(plyFile) {}

    float Float(PlyType type, const PlyRow& row) {
        return Convert<float>(type, Bytes(SizeOf(type), row));
    }

    std::int64_t Whole(PlyType type, const PlyRow& row) {
        return Convert<std::int64_t>(type, Bytes(SizeOf(type), row));
    }

    void Skip(PlyType type, std::uint64_t count, const PlyRow& row) {
        // The count has at most 32 bits, so the product cannot overflow.
        if (!file.Skip(SizeOf(type) * count)) {
            RefuseEnd(row);
        }
    }

    void CheckLength(PlyType type, std::uint64_t count, const PlyRow& row) {
        if (count > file.Remaining() / SizeOf(type)) {
            RefuseEnd(row);
        }
    }

    std::string Location() const { return "byte " + std::to_string(file.Position()); }

private:
    const unsigned char* Bytes(std::size_t size, const PlyRow& row) {
        const unsigned char* bytes = file.Take(size);
        if (bytes == nullptr) {
            RefuseEnd(row);
        }
        return bytes;
    }

    [[noreturn]] void RefuseEnd(const PlyRow& row) const {
        RefuseRow(file, Location(), row, "the file ends too early");
    }

    template <class Number>
    static Number Load(const unsigned char* bytes) {
        std::array<unsigned char, sizeof(Number)> ordered;
        std::memcpy(ordered.data(), bytes, sizeof(Number));
        if constexpr (order != std::endian::native) {
            std::reverse(ordered.begin(), ordered.end());
        }
        return std::bit_cast<Number>(ordered);
    }

    template <class Result>
    static Result Convert(PlyType type, const unsigned char* bytes) {
        switch (type) {
            case PlyType::Int8:
                return static_cast<Result>(Load<std::int8_t>(bytes));
            case PlyType::UInt8:
                return static_cast<Result>(Load<std::uint8_t>(bytes));
            case PlyType::Int16:
                return static_cast<Result>(Load<std::int16_t>(bytes));
            case PlyType::UInt16:
                return static_cast<Result>(Load<std::uint16_t>(bytes));
            case PlyType::Int32:
                return static_cast<Result>(Load<std::int32_t>(bytes));
            case PlyType::UInt32:
                return static_cast<Result>(Load<std::uint32_t>(bytes));
            // These types occur only where a float is requested.
            case PlyType::Float32:
                return static_cast<Result>(Load<float>(bytes));
            case PlyType::Float64:
                return static_cast<Result>(Load<double>(bytes));
        }
        return Result{};
    }

    InputFile& file;
};

}  // namespace trovik
