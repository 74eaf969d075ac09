// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshImport.h"
#include "framework/files/PlyBody.h"
#include "framework/files/PlyHeader.h"
#include "framework/files/PlyVertexTargets.h"
#include "framework/io/InputFile.h"
#include "framework/mesh/FaceCorners.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// Returns the divisor for colour values: 1 for floats, 65535 for UInt16, 255 for other integers.
float ColorScale(PlyType type) {
    return !IsWhole(type) ? 1.0f : type == PlyType::UInt16 ? 65535.0f : 255.0f;
}

template <class Body>
class BodyReader {
public:
    BodyReader(InputFile& plyFile, const PlyHeader& plyHeader, JobControl* jobControl)
        : file(plyFile), header(plyHeader), body(plyFile, plyHeader), job(jobControl) {}

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
        const PlyVertexTargets targets = FindPlyVertexTargets(file.Path(), element);
        SurfaceAttributes& attributes = mesh.attributes;
        const auto count = static_cast<std::size_t>(element.count);
        mesh.positions.reserve(count);
        mesh.normals.reserve(targets.hasNormals ? count : 0);
        attributes.uvs.reserve(targets.hasUvs ? count : 0);
        attributes.colors.reserve(targets.hasColors ? count : 0);
        attributes.hasAlpha = targets.hasAlpha;
        std::array<float, plyVertexNumbers> values = {};
        values[plyAlpha] = 1.0f;
        for (PlyRow row{&element, 0}; row.number < element.count; ++row.number) {
            for (std::size_t i = 0; i < targets.slots.size(); ++i) {
                const PlyProperty& property = element.properties[i];
                if (targets.slots[i] < 0) {
                    SkipProperty(property, row);
                    continue;
                }
                const auto slot = static_cast<std::size_t>(targets.slots[i]);
                values[slot] = body.Float(property.type, row);
                if (slot >= plyFirstColor) {
                    values[slot] /= ColorScale(property.type);
                }
                if (slot >= plyFirstUv && !std::isfinite(values[slot])) {
                    RefuseRow(file, body.Location(), row, "'" + property.name + "' is not finite");
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

    /// Converts per-vertex UVs to per-corner UVs.
    void FinishUvs() {
        SurfaceAttributes& attributes = mesh.attributes;
        if (uvsOfVertices) {
            attributes.cornerUvs = mesh.faceVertices;
            // CheckPolygonMesh reports corners whose vertex does not exist.
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
        for (PlyRow row{&element, 0}; row.number < element.count; ++row.number) {
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
    std::uint64_t ReadLength(const PlyProperty& property, const PlyRow& row) {
        const std::int64_t length = body.Whole(property.countType, row);
        if (length < 0 || length > std::int64_t{0xFFFFFFFF}) {
            RefuseRow(file,
                      body.Location(),
                      row,
                      "a list cannot have " + std::to_string(length) + " entries");
        }
        body.CheckLength(property.type, static_cast<std::uint64_t>(length), row);
        return static_cast<std::uint64_t>(length);
    }

    void ReadFace(const PlyProperty& property, const PlyRow& row) {
        const std::uint64_t length = ReadLength(property, row);
        if (length < 3 || length > maxFaceCorners) {
            RefuseRow(file,
                      body.Location(),
                      row,
                      "a face has " + std::to_string(length) + " corners; it must have 3 to " +
                          std::to_string(maxFaceCorners));
        }
        for (std::uint64_t i = 0; i < length; ++i) {
            const std::int64_t vertex = body.Whole(property.type, row);
            if (vertex < 0 || vertex > std::int64_t{0xFFFFFFFF}) {
                RefuseRow(file,
                          body.Location(),
                          row,
                          "the vertex number " + std::to_string(vertex) + " is not valid");
            }
            mesh.faceVertices.push_back(static_cast<std::uint32_t>(vertex));
        }
        mesh.faceSizes.push_back(static_cast<std::uint32_t>(length));
    }

    void ReadTexcoord(const PlyProperty& property, const PlyRow& row) {
        const std::uint64_t length = ReadLength(property, row);
        for (std::uint64_t i = 0; i < length; ++i) {
            rowUvs.push_back(body.Float(property.type, row));
            if (!std::isfinite(rowUvs.back())) {
                RefuseRow(file, body.Location(), row, "a texture coordinate is not finite");
            }
        }
    }

    /// A face has UVs only if its list has two numbers per corner.
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

    void SkipProperty(const PlyProperty& property, const PlyRow& row) {
        body.Skip(property.type, property.isList ? ReadLength(property, row) : 1, row);
    }

    void SkipElement(const PlyElement& element) {
        // Rows without properties take no space, so the file size does not limit their count.
        if (element.properties.empty()) {
            return;
        }
        for (PlyRow row{&element, 0}; row.number < element.count; ++row.number) {
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
            return BodyReader<PlyTextBody>(file, header, job).Read();
        case PlyEncoding::BinaryLittleEndian:
            return BodyReader<PlyBinaryBody<std::endian::little>>(file, header, job).Read();
        case PlyEncoding::BinaryBigEndian:
            return BodyReader<PlyBinaryBody<std::endian::big>>(file, header, job).Read();
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
