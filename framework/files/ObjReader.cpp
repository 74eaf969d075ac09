// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/files/MeshFiles.h"
#include "framework/files/MeshImport.h"
#include "framework/files/ObjLines.h"
#include "framework/files/ObjStatement.h"
#include "framework/io/NumberText.h"
#include "framework/mesh/FaceCorners.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// Builds the mesh from the statements.
class ObjSource {
public:
    ObjSource(const std::string& path, JobControl* jobControl)
        : lines(path, jobControl), job(jobControl) {}

    PolygonMesh Read() {
        for (std::string_view statement; lines.Next(statement);) {
            line = lines.Line();
            Take(statement);
        }
        if (farthestIndex && *farthestIndex >= mesh.positions.size()) {
            line = farthestLine;
            Refuse(OutOfRange(static_cast<std::int64_t>(*farthestIndex) + 1));
        }
        if (farthestUv && *farthestUv >= mesh.attributes.uvs.size()) {
            line = farthestUvLine;
            Refuse(UvOutOfRange(static_cast<std::int64_t>(*farthestUv) + 1));
        }
        FinishAttributes();
        if (!normalsFit || mesh.normals.size() != mesh.positions.size()) {
            mesh.normals.clear();
        }
        FinishImport(mesh, lines.Path(), job);
        return std::move(mesh);
    }

private:
    void Take(std::string_view rest) {
        const std::string_view keyword = TakeWord(rest);
        if (keyword == "v") {
            AddVector(rest, "vertex", mesh.positions);
            AddColor(rest);
        } else if (keyword == "vt") {
            AddUv(rest);
        } else if (keyword == "vn") {
            AddVector(rest, "normal", mesh.normals);
        } else if (keyword == "f") {
            AddFace(rest);
        } else if (keyword == "o" || keyword == "g") {
            groups.Choose(Trimmed(rest));
            // If a line lists several groups, the mesh gets the name of the first one.
            NameBy(keyword == "g" ? TakeWord(rest) : rest, keyword == "o");
        } else if (keyword == "usemtl") {
            materials.Choose(Trimmed(rest));
        } else if (keyword == "mtllib") {
            AddMaterialFiles(rest);
        } else if (keyword == "s") {
            smoothing = SmoothingGroupOf(Trimmed(rest), smoothing);
        } else if (keyword == "#") {
            TakeComment(rest);
        }
    }

    [[noreturn]] void Refuse(const std::string& reason) const {
        throw HostError(lines.Path() + ", line " + std::to_string(line) + ": " + reason);
    }

    void AddVector(std::string_view& text,
                   const char* what,
                   std::vector<std::array<float, 3>>& vectors) {
        std::array<float, 3> vector = {};
        for (float& coordinate : vector) {
            const std::string_view word = TakeWord(text);
            if (word.empty()) {
                return Refuse(std::string(what) + " has fewer than three coordinates");
            }
            if (!ParseFloat(word, coordinate)) {
                return Refuse(std::string(what) + " coordinate '" +
                              std::string(word.substr(0, 40)) + "' is not a number");
            }
            if (!std::isfinite(coordinate)) {
                return Refuse(std::string(what) + " coordinate '" +
                              std::string(word.substr(0, 40)) + "' is not finite");
            }
        }
        vectors.push_back(vector);
    }

    /// Three numbers after a position are its colour; four are its colour and alpha. If any vertex
    /// has no colour, the mesh has no colours.
    void AddColor(std::string_view text) {
        if (!allColored) {
            return;
        }
        std::array<float, 4> color = {0.0f, 0.0f, 0.0f, 1.0f};
        std::size_t count = 0;
        for (std::string_view word = TakeWord(text); !word.empty() && count < 5 && word[0] != '#';
             word = TakeWord(text)) {
            if (count == 4 || !ParseFloat(word, color[count]) || !std::isfinite(color[count])) {
                count = 0;
                break;
            }
            ++count;
        }
        allColored = count >= 3;
        mesh.attributes.hasAlpha = mesh.attributes.hasAlpha || count == 4;
        if (allColored) {
            mesh.attributes.colors.push_back(color);
        } else {
            mesh.attributes.colors = {};
        }
    }

    void AddUv(std::string_view text) {
        std::array<float, 2> uv = {};
        for (std::size_t i = 0; i < 2; ++i) {
            const std::string_view word = TakeWord(text);
            if (word.empty() && i == 1) {
                break;
            }
            if (!ParseFloat(word, uv[i]) || !std::isfinite(uv[i])) {
                return Refuse("texture coordinate '" + std::string(word.substr(0, 40)) +
                              "' is not a finite number");
            }
        }
        mesh.attributes.uvs.push_back(uv);
    }

    void AddMaterialFiles(std::string_view text) {
        const std::filesystem::path folder = std::filesystem::path(lines.Path()).parent_path();
        for (const std::string& name : MaterialFileNames(text)) {
            materialFiles.Choose((folder / name).lexically_normal().string());
            materialFiles.Number();
        }
    }

    void TakeComment(std::string_view text) {
        const std::string_view what = TakeWord(text);
        const std::string value = Trimmed(text);
        if (what == "units") {
            mesh.attributes.space.metersPerUnit = MetersPerUnit(value);
        } else if (what == "up") {
            mesh.attributes.space.up = UpAxisOf(value);
        }
    }

    /// Removes attributes without information: UVs that no corner uses, and a single group that
    /// contains all faces and has the name of the mesh.
    void FinishAttributes() {
        SurfaceAttributes& attributes = mesh.attributes;
        attributes.hasAlpha = attributes.hasAlpha && allColored;
        if (attributes.cornerUvs.empty()) {
            attributes.uvs.clear();
        }
        attributes.groupNames = std::move(groups.names);
        attributes.materialNames = std::move(materials.names);
        attributes.materialFiles = std::move(materialFiles.names);
        const bool saysNothing = attributes.groupNames.size() == 1 &&
                                 attributes.groupNames[0] == mesh.name &&
                                 std::find(attributes.faceGroups.begin(),
                                           attributes.faceGroups.end(),
                                           SurfaceAttributes::none) == attributes.faceGroups.end();
        if (saysNothing || attributes.faceGroups.empty()) {
            attributes.groupNames.clear();
            attributes.faceGroups.clear();
        }
        if (attributes.faceMaterials.empty()) {
            attributes.materialNames.clear();
            attributes.materialFiles.clear();
        }
    }

    void ReadCorners(std::string_view text) {
        corners.clear();
        for (std::string_view word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
            const std::optional<ObjCorner> corner = CornerOf(word);
            if (!corner) {
                Refuse("face corner '" + std::string(word.substr(0, 40)) +
                       "' does not have the form v, v/vt, v//vn or v/vt/vn with whole numbers "
                       "other than 0");
            }
            corners.push_back(*corner);
        }
        if (corners.size() < 3) {
            Refuse("face has " + std::to_string(corners.size()) +
                   " corners, but at least 3 are needed");
        }
        if (corners.size() > maxFaceCorners) {
            Refuse("face has " + std::to_string(corners.size()) + " corners, but at most " +
                   std::to_string(maxFaceCorners) + " are supported");
        }
    }

    std::string OutOfRange(std::int64_t index) const {
        return "face refers to vertex " + std::to_string(index) + ", but only " +
               std::to_string(mesh.positions.size()) + " vertices are defined";
    }

    std::string UvOutOfRange(std::int64_t index) const {
        return "face refers to texture coordinate " + std::to_string(index) + ", but only " +
               std::to_string(mesh.attributes.uvs.size()) + " are defined";
    }

    void AddCornerUv(std::int64_t written) {
        std::vector<std::uint32_t>& cornerUvs = mesh.attributes.cornerUvs;
        if (written == 0) {
            if (!cornerUvs.empty()) {
                cornerUvs.push_back(SurfaceAttributes::none);
            }
            return;
        }
        const std::int64_t uv = FromStart(written, mesh.attributes.uvs.size());
        if (uv < 0) {
            Refuse(UvOutOfRange(written));
        }
        // No earlier corner had a UV.
        if (cornerUvs.empty()) {
            cornerUvs.resize(mesh.faceVertices.size(), SurfaceAttributes::none);
        }
        const auto index = static_cast<std::uint32_t>(uv);
        if (!farthestUv || index > *farthestUv) {
            farthestUv = index;
            farthestUvLine = line;
        }
        cornerUvs.push_back(index);
    }

    /// Adds an entry for the current face. The list stays empty until a face has a number.
    void AddFaceName(std::uint32_t number, std::vector<std::uint32_t>& numbers) const {
        if (number != SurfaceAttributes::none || !numbers.empty()) {
            numbers.resize(mesh.faceSizes.size(), SurfaceAttributes::none);
            numbers.push_back(number);
        }
    }

    void AddFace(std::string_view text) {
        ReadCorners(text);
        AddFaceName(groups.Number(), mesh.attributes.faceGroups);
        AddFaceName(materials.Number(), mesh.attributes.faceMaterials);
        AddFaceName(smoothing, mesh.attributes.faceSmoothing);
        for (const ObjCorner& corner : corners) {
            const std::int64_t vertex = FromStart(corner.vertex, mesh.positions.size());
            if (vertex < 0) {
                Refuse(OutOfRange(corner.vertex));
            }
            const auto index = static_cast<std::uint32_t>(vertex);
            // A vertex may be defined after the faces that use it, so a missing vertex is detected
            // at the end.
            if (!farthestIndex || index > *farthestIndex) {
                farthestIndex = index;
                farthestLine = line;
            }
            normalsFit = normalsFit && FromStart(corner.normal, mesh.normals.size()) == vertex;
            AddCornerUv(corner.uv);
            mesh.faceVertices.push_back(index);
        }
        mesh.faceSizes.push_back(static_cast<std::uint32_t>(corners.size()));
    }

    /// Converts an index in the file to a zero-based index; the result is negative if there is no
    /// such element.
    static std::int64_t FromStart(std::int64_t written, std::size_t definedSoFar) {
        return written > 0   ? written - 1
               : written < 0 ? static_cast<std::int64_t>(definedSoFar) + written
                             : -1;
    }

    void NameBy(std::string_view name, bool isObject) {
        if ((isObject && !namedByObject) || mesh.name.empty()) {
            mesh.name = Trimmed(name);
            namedByObject = isObject && !mesh.name.empty();
        }
    }

    ObjLines lines;
    JobControl* job;
    /// The current line, for error messages.
    std::uint64_t line = 0;

    PolygonMesh mesh;
    std::optional<std::uint32_t> farthestIndex;
    std::uint64_t farthestLine = 0;
    bool normalsFit = true;
    bool namedByObject = false;

    ObjNames groups;
    ObjNames materials;
    ObjNames materialFiles;
    std::uint32_t smoothing = SurfaceAttributes::none;
    bool allColored = true;
    /// Values of the current face.
    std::vector<ObjCorner> corners;
    std::optional<std::uint32_t> farthestUv;
    std::uint64_t farthestUvLine = 0;
};

}  // namespace

PolygonMesh ReadObj(const std::string& path, JobControl* job) {
    return ObjSource(path, job).Read();
}

}  // namespace trovik
