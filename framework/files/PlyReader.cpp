// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshImport.h"
#include "framework/files/PlyHeader.h"
#include "framework/io/InputFile.h"
#include "framework/io/NumberText.h"
#include "framework/mesh/FaceCorners.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// The position in the file, for messages.
struct Row {
    const PlyElement* element = nullptr;
    std::uint64_t number = 0;
};

[[noreturn]] void Refuse(const InputFile& file,
                         const std::string& place,
                         const Row& row,
                         const std::string& reason) {
    throw HostError(file.Path() + ", " + place + ": element '" + row.element->name + "', row " +
                    std::to_string(row.number) + " of " + std::to_string(row.element->count) +
                    " (counted from 0): " + reason);
}

/// Numbers as words, separated by white space.
class TextBody {
public:
    TextBody(InputFile& file_, const PlyHeader& header) : file(file_), line(header.lineCount) {}

    float Float(PlyType, const Row& row) {
        const std::string_view word = Word(row);
        float value = 0.0f;
        if (!ParseFloat(word, value)) {
            RefuseWord(word, "a number", row);
        }
        return value;
    }

    std::int64_t Whole(PlyType, const Row& row) {
        const std::string_view word = Word(row);
        std::int64_t value = 0;
        const char* const end = word.data() + word.size();
        const auto [used, error] = std::from_chars(word.data(), end, value);
        if (used != end || error != std::errc()) {
            RefuseWord(word, "a whole number", row);
        }
        return value;
    }

    void Skip(PlyType, std::uint64_t count, const Row& row) {
        for (std::uint64_t i = 0; i < count; ++i) {
            Word(row);
        }
    }

    /// Checks that a list of this length can follow, or throws.
    void CheckLength(PlyType, std::uint64_t count, const Row& row) {
        // A digit and a blank per number, except for the last one of the file.
        if (count > (rest.size() + file.Remaining() + 1) / 2) {
            RefuseEnd(row);
        }
    }

    std::string Place() const { return "line " + std::to_string(line); }

private:
    static constexpr std::string_view Blanks = " \t\r\v\f";
    /// Sufficient for a line with the longest accepted face, in numbers of ten digits.
    static constexpr std::size_t MaxLineBytes = std::size_t{64} << 20;

    std::string_view Word(const Row& row) {
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

    [[noreturn]] void RefuseEnd(const Row& row) const {
        Refuse(file, Place(), row, "the file ends too early");
    }

    [[noreturn]] void RefuseWord(std::string_view word, const char* wanted, const Row& row) const {
        std::string quoted;
        for (const char letter : word.substr(0, 40)) {
            quoted += letter >= ' ' && letter <= '~' ? letter : '?';
        }
        Refuse(file, Place(), row, "'" + quoted + "' is not " + wanted);
    }

    InputFile& file;
    std::uint64_t line;
    std::string_view rest;
};

/// Numbers as bytes, in either byte order.
template <std::endian order>
class BinaryBody {
public:
    BinaryBody(InputFile& file_, const PlyHeader&) : file(file_) {}

    float Float(PlyType type, const Row& row) {
        return Convert<float>(type, Bytes(SizeOf(type), row));
    }

    std::int64_t Whole(PlyType type, const Row& row) {
        return Convert<std::int64_t>(type, Bytes(SizeOf(type), row));
    }

    void Skip(PlyType type, std::uint64_t count, const Row& row) {
        // The count has at most 32 bits, so the product cannot overflow.
        if (!file.Skip(SizeOf(type) * count)) {
            RefuseEnd(row);
        }
    }

    void CheckLength(PlyType type, std::uint64_t count, const Row& row) {
        if (count > file.Remaining() / SizeOf(type)) {
            RefuseEnd(row);
        }
    }

    std::string Place() const { return "byte " + std::to_string(file.Position()); }

private:
    const unsigned char* Bytes(std::size_t size, const Row& row) {
        const unsigned char* bytes = file.Take(size);
        if (bytes == nullptr) {
            RefuseEnd(row);
        }
        return bytes;
    }

    [[noreturn]] void RefuseEnd(const Row& row) const {
        Refuse(file, Place(), row, "the file ends too early");
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
            // Only values that are read as floats can have these types.
            case PlyType::Float32:
                return static_cast<Result>(Load<float>(bytes));
            case PlyType::Float64:
                return static_cast<Result>(Load<double>(bytes));
        }
        return Result{};
    }

    InputFile& file;
};

/// Order of the values that are read from a vertex row.
constexpr std::size_t FirstNormal = 3;
constexpr std::size_t FirstUv = 6;
constexpr std::size_t FirstColor = 8;
constexpr std::size_t Alpha = 11;
constexpr std::size_t VertexNumbers = 12;

struct VertexTargets {
    /// Per property, its index among the values that are read, or -1 if it is skipped.
    std::vector<int> places;
    bool hasNormals = false;
    bool hasUvs = false;
    bool hasColors = false;
    bool hasAlpha = false;
};

VertexTargets FindVertexTargets(const InputFile& file, const PlyElement& element) {
    constexpr std::pair<std::string_view, int> Names[] = {{"x", 0},
                                                          {"y", 1},
                                                          {"z", 2},
                                                          {"nx", 3},
                                                          {"ny", 4},
                                                          {"nz", 5},
                                                          {"s", 6},
                                                          {"t", 7},
                                                          {"u", 6},
                                                          {"v", 7},
                                                          {"texture_u", 6},
                                                          {"texture_v", 7},
                                                          {"red", 8},
                                                          {"green", 9},
                                                          {"blue", 10},
                                                          {"alpha", 11}};
    VertexTargets targets;
    std::array<bool, VertexNumbers> found = {};
    for (const PlyProperty& property : element.properties) {
        const auto* name =
            std::find_if(std::begin(Names), std::end(Names), [&property](const auto& entry) {
                return entry.first == property.name;
            });
        int place = name == std::end(Names) || property.isList ? -1 : name->second;
        // If several names exist for the same value, the first one is used.
        if (place >= 0 && found[static_cast<std::size_t>(place)]) {
            place = -1;
        }
        targets.places.push_back(place);
        if (place >= 0) {
            found[static_cast<std::size_t>(place)] = true;
        }
    }
    for (std::size_t i = 0; i < FirstNormal; ++i) {
        if (!found[i]) {
            throw HostError(file.Path() + ": element 'vertex' has no scalar property '" +
                            std::string(Names[i].first) + "'");
        }
    }
    const auto all = [&found](std::size_t first, std::size_t count) {
        return std::all_of(found.begin() + static_cast<std::ptrdiff_t>(first),
                           found.begin() + static_cast<std::ptrdiff_t>(first + count),
                           [](bool one) { return one; });
    };
    targets.hasNormals = all(FirstNormal, 3);
    targets.hasUvs = all(FirstUv, 2);
    targets.hasColors = all(FirstColor, 3);
    targets.hasAlpha = targets.hasColors && found[Alpha];
    return targets;
}

/// Integer colours are fractions of the largest value of their type.
float ColorScale(PlyType type) {
    return !IsWhole(type) ? 1.0f : type == PlyType::UInt16 ? 65535.0f : 255.0f;
}

template <class Body>
class BodyReader {
public:
    BodyReader(InputFile& file_, const PlyHeader& header_, JobControl* jobControl)
        : file(file_), header(header_), body(file_, header_), job(jobControl) {}

    PolygonMesh Read() {
        for (const PlyElement& element : header.elements) {
            if (element.name == "vertex") {
                ReadVertices(element);
            } else if (element.name == "face") {
                ReadFaces(element);
            } else {
                SkipElement(element);
            }
        }
        mesh.name = header.name;
        mesh.attributes.space = header.space;
        FinishUvs();
        return std::move(mesh);
    }

private:
    void ReadVertices(const PlyElement& element) {
        const VertexTargets targets = FindVertexTargets(file, element);
        SurfaceAttributes& attributes = mesh.attributes;
        const auto count = static_cast<std::size_t>(element.count);
        mesh.positions.reserve(count);
        mesh.normals.reserve(targets.hasNormals ? count : 0);
        attributes.uvs.reserve(targets.hasUvs ? count : 0);
        attributes.colors.reserve(targets.hasColors ? count : 0);
        attributes.hasAlpha = targets.hasAlpha;
        std::array<float, VertexNumbers> values = {};
        values[Alpha] = 1.0f;
        for (Row row{&element, 0}; row.number < element.count; ++row.number) {
            for (std::size_t i = 0; i < targets.places.size(); ++i) {
                const PlyProperty& property = element.properties[i];
                if (targets.places[i] < 0) {
                    SkipProperty(property, row);
                    continue;
                }
                const auto place = static_cast<std::size_t>(targets.places[i]);
                values[place] = body.Float(property.type, row);
                if (place >= FirstColor) {
                    values[place] /= ColorScale(property.type);
                }
                if (place >= FirstUv && !std::isfinite(values[place])) {
                    Refuse(file, body.Place(), row, "'" + property.name + "' is not finite");
                }
            }
            mesh.positions.push_back({values[0], values[1], values[2]});
            if (targets.hasNormals) {
                mesh.normals.push_back({values[3], values[4], values[5]});
            }
            if (targets.hasUvs) {
                attributes.uvs.push_back({values[6], values[7]});
            }
            if (targets.hasColors) {
                attributes.colors.push_back({values[8], values[9], values[10], values[11]});
            }
        }
        uvsOfVertices = targets.hasUvs;
    }

    /// Converts the UVs of vertices to UVs of their corners.
    void FinishUvs() {
        SurfaceAttributes& attributes = mesh.attributes;
        if (uvsOfVertices) {
            attributes.cornerUvs = mesh.faceVertices;
            // A corner with a missing vertex is reported by the check of the mesh.
            return;
        }
        attributes.uvs = std::move(faceUvs);
        if (!attributes.uvs.empty()) {
            attributes.cornerUvs = std::move(faceCornerUvs);
            WeldUvs(mesh, job);
        }
    }

    void ReadFaces(const PlyElement& element) {
        std::size_t list = element.properties.size();
        const std::size_t texcoord =
            static_cast<std::size_t>(std::find_if(element.properties.begin(),
                                                  element.properties.end(),
                                                  [](const PlyProperty& property) {
                                                      return property.name == "texcoord" &&
                                                             property.isList &&
                                                             !IsWhole(property.type);
                                                  }) -
                                     element.properties.begin());
        for (std::size_t i = 0; i < element.properties.size(); ++i) {
            const PlyProperty& property = element.properties[i];
            if (property.name == "vertex_indices" || property.name == "vertex_index") {
                if (!property.isList || !IsWhole(property.type)) {
                    throw HostError(file.Path() + ": property '" + property.name +
                                    "' of element 'face' is not a list of whole numbers");
                }
                if (list != element.properties.size()) {
                    throw HostError(file.Path() +
                                    ": element 'face' has both vertex_indices and vertex_index");
                }
                list = i;
            }
        }
        if (list == element.properties.size()) {
            throw HostError(file.Path() +
                            ": element 'face' has no list 'vertex_indices' or 'vertex_index'");
        }
        mesh.faceSizes.reserve(static_cast<std::size_t>(element.count));
        for (Row row{&element, 0}; row.number < element.count; ++row.number) {
            rowUvs.clear();
            for (std::size_t i = 0; i < element.properties.size(); ++i) {
                if (i == list) {
                    ReadFace(element.properties[i], row);
                } else if (i == texcoord) {
                    ReadTexcoord(element.properties[i], row);
                } else {
                    SkipProperty(element.properties[i], row);
                }
            }
            if (texcoord != element.properties.size()) {
                TakeRowUvs();
            }
        }
    }

    /// Returns the checked length of the list that follows.
    std::uint64_t ReadLength(const PlyProperty& property, const Row& row) {
        const std::int64_t length = body.Whole(property.countType, row);
        if (length < 0 || length > std::int64_t{0xFFFFFFFF}) {
            Refuse(file,
                   body.Place(),
                   row,
                   "a list cannot have " + std::to_string(length) + " entries");
        }
        body.CheckLength(property.type, static_cast<std::uint64_t>(length), row);
        return static_cast<std::uint64_t>(length);
    }

    void ReadFace(const PlyProperty& property, const Row& row) {
        const std::uint64_t length = ReadLength(property, row);
        if (length < 3 || length > maxFaceCorners) {
            Refuse(file,
                   body.Place(),
                   row,
                   "a face has " + std::to_string(length) + " corners; it must have 3 to " +
                       std::to_string(maxFaceCorners));
        }
        for (std::uint64_t i = 0; i < length; ++i) {
            const std::int64_t vertex = body.Whole(property.type, row);
            if (vertex < 0 || vertex > std::int64_t{0xFFFFFFFF}) {
                Refuse(file,
                       body.Place(),
                       row,
                       "the vertex number " + std::to_string(vertex) + " is not valid");
            }
            mesh.faceVertices.push_back(static_cast<std::uint32_t>(vertex));
        }
        mesh.faceSizes.push_back(static_cast<std::uint32_t>(length));
    }

    void ReadTexcoord(const PlyProperty& property, const Row& row) {
        const std::uint64_t length = ReadLength(property, row);
        for (std::uint64_t i = 0; i < length; ++i) {
            rowUvs.push_back(body.Float(property.type, row));
            if (!std::isfinite(rowUvs.back())) {
                Refuse(file, body.Place(), row, "a texture coordinate is not finite");
            }
        }
    }

    /// There must be two numbers per corner; with any other count the face has no UVs.
    void TakeRowUvs() {
        const std::size_t corners = mesh.faceSizes.back();
        const bool fits = rowUvs.size() == corners * 2;
        for (std::size_t corner = 0; corner < corners; ++corner) {
            if (fits) {
                faceCornerUvs.push_back(static_cast<std::uint32_t>(faceUvs.size()));
                faceUvs.push_back({rowUvs[corner * 2], rowUvs[corner * 2 + 1]});
            } else {
                faceCornerUvs.push_back(SurfaceAttributes::none);
            }
        }
    }

    void SkipProperty(const PlyProperty& property, const Row& row) {
        body.Skip(property.type, property.isList ? ReadLength(property, row) : 1, row);
    }

    void SkipElement(const PlyElement& element) {
        // Rows without properties take no space, so their count may be any number.
        if (element.properties.empty()) {
            return;
        }
        for (Row row{&element, 0}; row.number < element.count; ++row.number) {
            for (const PlyProperty& property : element.properties) {
                SkipProperty(property, row);
            }
        }
    }

    InputFile& file;
    const PlyHeader& header;
    Body body;
    JobControl* job;
    PolygonMesh mesh;
    bool uvsOfVertices = false;
    /// Values of the current face.
    std::vector<float> rowUvs;
    std::vector<std::array<float, 2>> faceUvs;
    std::vector<std::uint32_t> faceCornerUvs;
};

PolygonMesh ReadBody(InputFile& file, const PlyHeader& header, JobControl* job) {
    switch (header.encoding) {
        case PlyEncoding::Text:
            return BodyReader<TextBody>(file, header, job).Read();
        case PlyEncoding::BinaryLittleEndian:
            return BodyReader<BinaryBody<std::endian::little>>(file, header, job).Read();
        case PlyEncoding::BinaryBigEndian:
            return BodyReader<BinaryBody<std::endian::big>>(file, header, job).Read();
    }
    return {};
}

}  // namespace

PolygonMesh ReadPly(const std::string& path, JobControl* job) {
    InputFile file(path, job);
    const PlyHeader header = ReadPlyHeader(file);
    for (const char* const name : {"vertex", "face"}) {
        if (std::none_of(header.elements.begin(),
                         header.elements.end(),
                         [name](const PlyElement& element) { return element.name == name; })) {
            throw HostError(path + ": the header has no element '" + name + "'");
        }
    }
    PolygonMesh mesh = ReadBody(file, header, job);
    FinishImport(mesh, path, job);
    return mesh;
}

}  // namespace trovik
