// SPDX-License-Identifier: Apache-2.0
#include "framework/files/PlyHeader.h"

#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>
#include <utility>

namespace trovik {

namespace {

// Larger than any real header; the limit prevents a damaged file from causing excessive
// allocations.
constexpr std::size_t MaxLineBytes = 64 * 1024;
constexpr std::size_t MaxHeaderLines = 100'000;
constexpr std::size_t MaxProperties = 1'000;
constexpr std::size_t MaxElements = 1'000;

std::optional<PlyType> TypeOfName(std::string_view name) {
    constexpr std::pair<std::string_view, PlyType> names[] = {{"char", PlyType::Int8},
                                                              {"int8", PlyType::Int8},
                                                              {"uchar", PlyType::UInt8},
                                                              {"uint8", PlyType::UInt8},
                                                              {"short", PlyType::Int16},
                                                              {"int16", PlyType::Int16},
                                                              {"ushort", PlyType::UInt16},
                                                              {"uint16", PlyType::UInt16},
                                                              {"int", PlyType::Int32},
                                                              {"int32", PlyType::Int32},
                                                              {"uint", PlyType::UInt32},
                                                              {"uint32", PlyType::UInt32},
                                                              {"float", PlyType::Float32},
                                                              {"float32", PlyType::Float32},
                                                              {"double", PlyType::Float64},
                                                              {"float64", PlyType::Float64}};
    for (const auto& [known, type] : names) {
        if (known == name) {
            return type;
        }
    }
    return std::nullopt;
}

std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(" \t"));
    text.remove_prefix(word.size());
    return word;
}

/// Returns text from the file in quotes, for a message. The text is made printable and, in case the
/// file is damaged, shortened.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char letter : text.substr(0, 40)) {
        quoted += letter >= ' ' && letter <= '~' ? letter : '?';
    }
    return quoted + "'";
}

class HeaderReader {
public:
    explicit HeaderReader(InputFile& plyFile) : file(plyFile) {}

    PlyHeader Read() {
        if (!NextLine() || line != "ply") {
            throw HostError(file.Path() +
                            ", line 1: not a PLY file, because it does not begin with 'ply'");
        }
        bool hasFormat = false;
        for (;;) {
            if (!NextLine()) {
                Refuse("the file ends inside its header");
            }
            std::string_view rest = line;
            const std::string_view keyword = TakeWord(rest);
            if (keyword == "end_header") {
                break;
            }
            if (keyword == "format") {
                ReadFormat(rest);
                hasFormat = true;
            } else if (keyword == "element") {
                ReadElement(rest);
            } else if (keyword == "property") {
                ReadProperty(rest);
            } else if (keyword == "obj_info") {
                const std::string_view what = TakeWord(rest);
                if (what == "name" && rest.size() > 1) {
                    header.name = rest.substr(1);
                } else if (what == "units") {
                    header.space.metersPerUnit = MetersPerUnit(std::string(TakeWord(rest)));
                } else if (what == "up") {
                    header.space.up = UpAxisOf(std::string(TakeWord(rest)));
                }
            } else if (!keyword.empty() && keyword != "comment") {
                Refuse(Quoted(keyword) + " is not a keyword of a PLY header");
            }
        }
        if (!hasFormat) {
            Refuse("the header does not specify a format");
        }
        CheckCounts();
        return std::move(header);
    }

private:
    bool NextLine() {
        if (!file.NextLine(line, MaxLineBytes)) {
            return false;
        }
        ++header.lineCount;
        if (header.lineCount > MaxHeaderLines) {
            Refuse("the header has too many lines");
        }
        return true;
    }

    [[noreturn]] void Refuse(const std::string& reason) const {
        throw HostError(file.Path() + ", line " + std::to_string(header.lineCount) + ": " + reason);
    }

    void ReadFormat(std::string_view rest) {
        const std::string_view encoding = TakeWord(rest);
        if (encoding == "ascii") {
            header.encoding = PlyEncoding::Text;
        } else if (encoding == "binary_little_endian") {
            header.encoding = PlyEncoding::BinaryLittleEndian;
        } else if (encoding == "binary_big_endian") {
            header.encoding = PlyEncoding::BinaryBigEndian;
        } else {
            Refuse("the format " + Quoted(encoding) + " is not known");
        }
        const std::string_view version = TakeWord(rest);
        if (version != "1.0") {
            Refuse("the format version " + Quoted(version) + " is not known");
        }
    }

    void ReadElement(std::string_view rest) {
        PlyElement element;
        element.name = TakeWord(rest);
        const std::string_view count = TakeWord(rest);
        if (element.name.empty() || count.empty()) {
            Refuse("an element needs a name and a count");
        }
        const char* const end = count.data() + count.size();
        const auto [used, error] = std::from_chars(count.data(), end, element.count);
        if (used != end || error != std::errc()) {
            Refuse("the element count " + Quoted(count) + " is not a non-negative whole number");
        }
        for (const PlyElement& other : header.elements) {
            if (other.name == element.name) {
                Refuse("the element " + Quoted(element.name) + " is defined twice");
            }
        }
        if (header.elements.size() == MaxElements) {
            Refuse("the header has too many elements");
        }
        header.elements.push_back(std::move(element));
    }

    PlyType ReadType(std::string_view& rest) const {
        const std::string_view name = TakeWord(rest);
        const std::optional<PlyType> type = TypeOfName(name);
        if (!type) {
            Refuse("the number type " + Quoted(name) + " is not known");
        }
        return *type;
    }

    void ReadProperty(std::string_view rest) {
        if (header.elements.empty()) {
            Refuse("a property comes before any element");
        }
        PlyElement& element = header.elements.back();
        PlyProperty property;
        std::string_view afterFirst = rest;
        if (TakeWord(afterFirst) == "list") {
            rest = afterFirst;
            property.isList = true;
            property.countType = ReadType(rest);
            if (!IsWhole(property.countType)) {
                Refuse("the length of a list must have an integer type");
            }
        }
        property.type = ReadType(rest);
        property.name = TakeWord(rest);
        if (property.name.empty()) {
            Refuse("a property needs a name");
        }
        for (const PlyProperty& other : element.properties) {
            if (other.name == property.name) {
                Refuse("the property " + Quoted(property.name) +
                       " is defined twice in its element");
            }
        }
        if (element.properties.size() == MaxProperties) {
            Refuse("the header has too many properties");
        }
        element.properties.push_back(std::move(property));
    }

    /// A count must not exceed the capacity of the file; otherwise, a damaged file would cause
    /// excessive allocations.
    void CheckCounts() const {
        const bool isText = header.encoding == PlyEncoding::Text;
        // The last number of a text file does not need white space after it.
        std::uint64_t remaining = file.Remaining() + (isText ? 1 : 0);
        for (const PlyElement& element : header.elements) {
            std::uint64_t shortestRow = 0;
            for (const PlyProperty& property : element.properties) {
                constexpr std::uint64_t digitAndBlank = 2;
                shortestRow += isText            ? digitAndBlank
                               : property.isList ? SizeOf(property.countType)
                                                 : SizeOf(property.type);
            }
            if (shortestRow == 0) {
                continue;
            }
            if (element.count > remaining / shortestRow) {
                throw HostError(file.Path() + ", byte " + std::to_string(file.Position()) + ": " +
                                std::to_string(element.count) + " rows of element " +
                                Quoted(element.name) +
                                " are declared, but the file is too short for them");
            }
            remaining -= element.count * shortestRow;
        }
    }

    InputFile& file;
    PlyHeader header;
    std::string_view line;
};

}  // namespace

PlyHeader ReadPlyHeader(InputFile& file) { return HeaderReader(file).Read(); }

}  // namespace trovik
