// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/TriangleEdit.h"

#include "framework/memory/FilledStore.h"
#include "framework/mesh/FaceRun.h"
#include "framework/mesh/VertexNeighbours.h"

#include <algorithm>
#include <cassert>
#include <functional>
#include <new>
#include <utility>

namespace trovik {

namespace {

constexpr uint32_t none = SurfaceAttributes::none;

/// Grows the capacity by at least half, so that repeated growth costs O(1) per element.
template <typename T>
void GrowStore(Store<T>& store, uint64_t count) {
    if (count <= store.capacity) return;
    const uint64_t wanted = std::max(count, uint64_t{store.capacity} + store.capacity / 2);
    const auto capacity = static_cast<uint32_t>(std::min(wanted, uint64_t{0xfffffffe}));
    if (!store.SetCapacity(capacity)) throw std::bad_alloc();
}

template <typename T>
void GrowVector(std::vector<T>& list, std::size_t count) {
    if (count > list.capacity())
        list.reserve(std::max(count, list.capacity() + list.capacity() / 2));
}

uint8_t PaintedFreeze(const TriangleVertex& vertex) {
    return (vertex.hiddenFreeze != 0 ? vertex.hiddenFreeze : vertex.freeze) & freezeAmountMask;
}

template <typename T>
void Resize(std::vector<T>& list, std::size_t count, const T& value) {
    if (!list.empty()) list.resize(count, value);
}

}  // namespace

/// Reads and writes the storage of a level.
class TriangleStorage {
public:
    TriangleStorage(LevelMesh& ofLevel, SurfaceAttributes& ofLevelAttributes)
        : level(ofLevel), attributes(ofLevelAttributes) {}

    TriangleVertex Read(uint32_t vertex) const {
        const Vertex& v = level.vertices.array[vertex];
        return {{v.x, v.y, v.z},
                level.vertexNormals.array[vertex],
                level.baseVertexFace.array[vertex],
                v.freeze,
                v.reserved[0]};
    }
    void Write(uint32_t vertex, const TriangleVertex& content) {
        Count(Read(vertex), content);
        Vertex& v = level.vertices.array[vertex];
        v.x = content.position[0];
        v.y = content.position[1];
        v.z = content.position[2];
        v.freeze = content.freeze;
        v.reserved[0] = content.hiddenFreeze;
        level.vertexNormals.array[vertex] = content.normal;
        level.baseVertexFace.array[vertex] = content.lowestFace;
    }
    TriangleFace ReadFace(uint32_t face) const {
        const std::size_t first = std::size_t{face} * 3;
        const uint32_t* v = level.faceVertexIndices.array + first;
        const uint32_t* n = level.baseNeighbours.array + first;
        return {{v[0], v[1], v[2]}, {n[0], n[1], n[2]}, level.faceFlags[face]};
    }
    void WriteFace(uint32_t face, const TriangleFace& content) {
        const bool wasHidden = level.IsFaceHidden(face);
        const bool isHidden = (content.flags & faceIsHidden) != 0;
        if (isHidden && !wasHidden) ++level.hiddenFaceCount;
        if (!isHidden && wasHidden) --level.hiddenFaceCount;
        const std::size_t first = std::size_t{face} * 3;
        std::copy_n(content.vertices.begin(), 3, level.faceVertexIndices.array + first);
        std::copy_n(content.neighbours.begin(), 3, level.baseNeighbours.array + first);
        level.faceFlags[face] = content.flags;
    }
    void SetNeighbour(uint32_t face, uint32_t side, uint32_t neighbour) {
        level.baseNeighbours.array[std::size_t{face} * 3 + side] = neighbour;
    }
    void SetCorner(uint32_t face, uint32_t corner, uint32_t vertex) {
        level.faceVertexIndices.array[std::size_t{face} * 3 + corner] = vertex;
    }
    TriangleFaceAttributes ReadAttributes(uint32_t face) const {
        TriangleFaceAttributes content{{none, none, none}, none, none, none};
        if (!attributes.cornerUvs.empty())
            std::copy_n(
                attributes.cornerUvs.begin() + std::ptrdiff_t{face} * 3, 3, content.uvs.begin());
        if (!attributes.faceGroups.empty()) content.group = attributes.faceGroups[face];
        if (!attributes.faceMaterials.empty()) content.material = attributes.faceMaterials[face];
        if (!attributes.faceSmoothing.empty()) content.smoothing = attributes.faceSmoothing[face];
        return content;
    }
    void WriteAttributes(uint32_t face, const TriangleFaceAttributes& content) {
        if (!attributes.cornerUvs.empty())
            std::copy_n(
                content.uvs.begin(), 3, attributes.cornerUvs.begin() + std::ptrdiff_t{face} * 3);
        if (!attributes.faceGroups.empty()) attributes.faceGroups[face] = content.group;
        if (!attributes.faceMaterials.empty()) attributes.faceMaterials[face] = content.material;
        if (!attributes.faceSmoothing.empty()) attributes.faceSmoothing[face] = content.smoothing;
    }
    bool HasFaceAttributes() const {
        return !attributes.cornerUvs.empty() || !attributes.faceGroups.empty() ||
               !attributes.faceMaterials.empty() || !attributes.faceSmoothing.empty();
    }

    /// \throw std::bad_alloc or Error::s_cBadAlloc; nothing has then changed.
    void Reserve(uint64_t vertices, uint64_t faces, std::size_t uvs) {
        if (vertices > 0xfffffffe || faces * 3 > 0xfffffffe) throw std::bad_alloc();
        GrowStore(level.vertices, vertices);
        GrowStore(level.vertexNormals, vertices);
        GrowStore(level.vertexWalkStamps, vertices);
        GrowStore(level.baseVertexFace, vertices);
        GrowStore(level.faceVertexIndices, faces * 3);
        GrowStore(level.baseNeighbours, faces * 3);
        GrowStore(level.faceFlagStore, faces);
        level.faceFlags = level.faceFlagStore.array;
        GrowStore(level.faceWalkStamps, faces);
        if (!attributes.colors.empty()) GrowVector(attributes.colors, vertices);
        if (!attributes.cornerUvs.empty()) GrowVector(attributes.cornerUvs, faces * 3);
        for (auto* list :
             {&attributes.faceGroups, &attributes.faceMaterials, &attributes.faceSmoothing})
            if (!list->empty()) GrowVector(*list, faces);
        if (!attributes.cornerUvs.empty()) GrowVector(attributes.uvs, uvs);
    }
    /// New elements are zero, and new faces have no neighbours. The counts of masked and hidden
    /// elements must already exclude elements that are dropped. Requires Reserve.
    void SetVertexCount(uint32_t count) {
        const uint32_t old = level.vertexCount;
        level.vertices.fill = level.vertexNormals.fill = level.vertexWalkStamps.fill =
            level.baseVertexFace.fill = count;
        for (uint32_t v = old; v < count; ++v) {
            level.vertices.array[v] = Vertex{};
            level.vertexNormals.array[v] = PackedNormal{0, 0, 0, 0};
            level.vertexWalkStamps.array[v] = 0;
            level.baseVertexFace.array[v] = openBorder;
        }
        level.vertexCount = count;
        Resize(attributes.colors, count, {0.0f, 0.0f, 0.0f, 1.0f});
    }
    void SetFaceCount(uint32_t count) {
        const uint32_t old = level.faceCount;
        level.faceVertexIndices.fill = level.baseNeighbours.fill = count * 3;
        level.faceFlagStore.fill = level.faceWalkStamps.fill = count;
        for (uint32_t face = old; face < count; ++face) {
            level.faceFlags[face] = 0;
            level.faceWalkStamps.array[face] = 0;
            WriteFace(face, {{0, 0, 0}, {openBorder, openBorder, openBorder}, 0});
        }
        level.faceCount = count;
        Resize(attributes.cornerUvs, std::size_t{count} * 3, none);
        Resize(attributes.faceGroups, count, none);
        Resize(attributes.faceMaterials, count, none);
        Resize(attributes.faceSmoothing, count, none);
    }
    /// Subtracts an element that is about to be dropped from the counts.
    void DropVertex(uint32_t vertex) { Count(Read(vertex), TriangleVertex{}); }
    void DropFace(uint32_t face) {
        if (level.IsFaceHidden(face)) --level.hiddenFaceCount;
    }

private:
    void Count(const TriangleVertex& old, const TriangleVertex& content) {
        if (PaintedFreeze(old) != 0) --level.frozenVertexCount;
        if (PaintedFreeze(content) != 0) ++level.frozenVertexCount;
        if (old.hiddenFreeze != 0) --level.hiddenVertexCount;
        if (content.hiddenFreeze != 0) ++level.hiddenVertexCount;
    }

    LevelMesh& level;
    SurfaceAttributes& attributes;
};

TriangleEdit::TriangleEdit(LevelMesh& ofLevel, SurfaceAttributes& ofLevelAttributes)
    : level(ofLevel),
      attributes(ofLevelAttributes),
      isVertexRecorded(ofLevel.VertexCount()),
      isFaceRecorded(ofLevel.faceCount) {
    assert(level.meshType != 1 && level.Index() == 0);
    before.vertexCount = level.VertexCount();
    before.faceCount = level.faceCount;
    before.uvCount = attributes.uvs.size();
}

void TriangleEdit::Reserve(uint32_t newVertices, uint32_t newFaces, uint32_t newUvs) {
    TriangleStorage(level, attributes)
        .Reserve(uint64_t{level.VertexCount()} + newVertices,
                 uint64_t{level.faceCount} + newFaces,
                 attributes.uvs.size() + newUvs);
    // The lists of the edit itself. At most the elements of the region and those around it are
    // recorded, which are about as many as the new ones.
    const std::size_t vertices = std::size_t{newVertices} * 2;
    const std::size_t faces = std::size_t{newFaces} * 4;
    GrowVector(isVertexRecorded, std::size_t{level.VertexCount()} + newVertices);
    GrowVector(isFaceRecorded, std::size_t{level.faceCount} + newFaces);
    GrowVector(before.vertexNumbers, before.vertexNumbers.size() + vertices);
    GrowVector(before.vertices, before.vertices.size() + vertices);
    if (!attributes.colors.empty()) GrowVector(before.colors, before.colors.size() + vertices);
    GrowVector(before.faceNumbers, before.faceNumbers.size() + faces);
    GrowVector(before.faces, before.faces.size() + faces);
    if (HasFaceAttributes()) GrowVector(before.attributes, before.attributes.size() + faces);
    GrowVector(removedVertices, removedVertices.size() + vertices);
    GrowVector(removedFaces, removedFaces.size() + faces);
    GrowVector(changedFaces, changedFaces.size() + faces * 2);
}

uint32_t TriangleEdit::AddVertex() {
    TriangleStorage storage(level, attributes);
    if (!removedVertices.empty()) {
        const uint32_t vertex = removedVertices.back();
        removedVertices.pop_back();
        return vertex;
    }
    const uint32_t vertex = level.VertexCount();
    storage.SetVertexCount(vertex + 1);
    isVertexRecorded.resize(
        std::max<std::size_t>(isVertexRecorded.size(), vertex + std::size_t{1}));
    if (!isVertexRecorded[vertex]) {
        isVertexRecorded[vertex] = true;
        before.vertexNumbers.push_back(vertex);
        before.vertices.push_back({});
        if (!attributes.colors.empty()) before.colors.push_back({});
    }
    return vertex;
}

uint32_t TriangleEdit::AddFace() {
    TriangleStorage storage(level, attributes);
    if (!removedFaces.empty()) {
        const uint32_t face = removedFaces.back();
        removedFaces.pop_back();
        return face;
    }
    const uint32_t face = level.faceCount;
    storage.SetFaceCount(face + 1);
    isFaceRecorded.resize(std::max<std::size_t>(isFaceRecorded.size(), face + std::size_t{1}));
    if (!isFaceRecorded[face]) {
        isFaceRecorded[face] = true;
        before.faceNumbers.push_back(face);
        before.faces.push_back({});
        if (HasFaceAttributes()) before.attributes.push_back({});
    }
    changedFaces.push_back(face);
    return face;
}

uint32_t TriangleEdit::AddUv(const std::array<float, 2>& uv) {
    attributes.uvs.push_back(uv);
    return static_cast<uint32_t>(attributes.uvs.size() - 1);
}

void TriangleEdit::RecordVertex(uint32_t vertex) {
    if (isVertexRecorded[vertex]) return;
    TriangleVertex content = TriangleStorage(level, attributes).Read(vertex);
    const uint32_t link = level.vertices.array[vertex].changeLink;
    if (link < level.changeRecordCount && level.changeRecords[link].vertexIndex == vertex) {
        const StoredVertexInfo& record = level.changeRecords[link];
        std::copy_n(record.originalPosition, 3, content.position.begin());
        const int16_t reserved = content.normal.reserved;
        content.normal = record.originalNormal;
        content.normal.reserved = reserved;
    }
    before.vertexNumbers.push_back(vertex);
    before.vertices.push_back(content);
    if (!attributes.colors.empty()) before.colors.push_back(attributes.colors[vertex]);
    isVertexRecorded[vertex] = true;
}

void TriangleEdit::RecordFace(uint32_t face) {
    changedFaces.push_back(face);
    if (isFaceRecorded[face]) return;
    const TriangleStorage storage(level, attributes);
    before.faceNumbers.push_back(face);
    before.faces.push_back(storage.ReadFace(face));
    if (HasFaceAttributes()) before.attributes.push_back(storage.ReadAttributes(face));
    isFaceRecorded[face] = true;
}

void TriangleEdit::RemoveVertex(uint32_t vertex) {
    SetFreeze(vertex, 0);
    SetLowestFace(vertex, openBorder);
    removedVertices.push_back(vertex);
}

// A removed face keeps one of its vertices, so that code that reads all faces reads valid numbers.
void TriangleEdit::RemoveFace(uint32_t face) {
    const uint32_t vertex = level.faceVertexIndices.array[std::size_t{face} * 3];
    SetFace(face, {{vertex, vertex, vertex}, {openBorder, openBorder, openBorder}, faceIsHidden});
    removedFaces.push_back(face);
}

bool TriangleEdit::IsRemovedFace(uint32_t face) const {
    const uint32_t* v = level.faceVertexIndices.array + std::size_t{face} * 3;
    return level.IsFaceHidden(face) && v[0] == v[1] && v[1] == v[2];
}

void TriangleEdit::SetPosition(uint32_t vertex, const Vector& position) {
    RecordVertex(vertex);
    level.StorePosition(vertex, position);
}

void TriangleEdit::SetFreeze(uint32_t vertex, uint8_t amount) {
    RecordVertex(vertex);
    level.SetFreeze(vertex, amount);
}

void TriangleEdit::SetColor(uint32_t vertex, const std::array<float, 4>& color) {
    if (attributes.colors.empty()) return;
    RecordVertex(vertex);
    attributes.colors[vertex] = color;
}

void TriangleEdit::SetLowestFace(uint32_t vertex, uint32_t face) {
    if (level.baseVertexFace.array[vertex] == face) return;
    RecordVertex(vertex);
    level.baseVertexFace.array[vertex] = face;
}

TriangleFace TriangleEdit::FaceOf(uint32_t face) const {
    return TriangleStorage(level, attributes).ReadFace(face);
}

void TriangleEdit::SetFace(uint32_t face, const TriangleFace& content) {
    RecordFace(face);
    TriangleStorage(level, attributes).WriteFace(face, content);
}

TriangleFaceAttributes TriangleEdit::AttributesOf(uint32_t face) const {
    return TriangleStorage(level, attributes).ReadAttributes(face);
}

void TriangleEdit::SetFaceAttributes(uint32_t face, const TriangleFaceAttributes& content) {
    RecordFace(face);
    TriangleStorage(level, attributes).WriteAttributes(face, content);
}

bool TriangleEdit::HasFaceAttributes() const {
    return TriangleStorage(level, attributes).HasFaceAttributes();
}

std::vector<uint32_t> TriangleEdit::TakeChangedFaces() {
    std::vector<uint32_t> faces = std::exchange(changedFaces, {});
    std::erase_if(faces, [this](uint32_t face) { return face >= level.faceCount; });
    MakeSet(faces);
    return faces;
}

void TriangleEdit::MoveVertex(uint32_t from, uint32_t to) {
    RecordVertex(from);
    RecordVertex(to);
    std::vector<uint32_t> faces;
    if (level.baseVertexFace.array[from] != openBorder)
        level.FacesAround(from, level.baseVertexFace.array[from], faces);
    TriangleStorage storage(level, attributes);
    for (const uint32_t face : faces) {
        RecordFace(face);
        for (uint32_t k = 0; k < 3; ++k)
            if (level.faceVertexIndices.array[std::size_t{face} * 3 + k] == from)
                storage.SetCorner(face, k, to);
    }
    storage.Write(to, storage.Read(from));
    level.vertices.array[to].changeLink = level.vertices.array[from].changeLink;
    if (!attributes.colors.empty()) attributes.colors[to] = attributes.colors[from];
}

void TriangleEdit::MoveFace(uint32_t from, uint32_t to) {
    RecordFace(from);
    RecordFace(to);
    TriangleStorage storage(level, attributes);
    const TriangleFace content = storage.ReadFace(from);
    storage.WriteFace(to, content);
    storage.WriteAttributes(to, storage.ReadAttributes(from));
    for (uint32_t side = 0; side < 3; ++side) {
        const uint32_t neighbour = content.neighbours[side];
        if (neighbour == openBorder) continue;
        RecordFace(neighbour >> 2);
        storage.SetNeighbour(neighbour >> 2, neighbour & 3u, to * 4 + side);
    }
    // The face gets a lower number than before.
    for (const uint32_t vertex : content.vertices)
        SetLowestFace(vertex,
                      level.baseVertexFace.array[vertex] == from
                          ? to
                          : std::min(level.baseVertexFace.array[vertex], to));
}

// From the highest number down, so that the last element is never a removed one.
void TriangleEdit::Compact() {
    assert(level.OpenChange() == nullptr && "records refer to vertices by number");
    TriangleStorage storage(level, attributes);
    std::sort(removedVertices.begin(), removedVertices.end(), std::greater<>());
    for (const uint32_t vertex : removedVertices) {
        const uint32_t last = level.VertexCount() - 1;
        if (vertex != last) MoveVertex(last, vertex);
        RecordVertex(last);
        storage.DropVertex(last);
        storage.SetVertexCount(last);
    }
    removedVertices.clear();
    std::sort(removedFaces.begin(), removedFaces.end(), std::greater<>());
    for (const uint32_t face : removedFaces) {
        const uint32_t last = level.faceCount - 1;
        if (face != last) MoveFace(last, face);
        RecordFace(last);
        storage.DropFace(last);
        storage.SetFaceCount(last);
    }
    removedFaces.clear();
}

TriangleContent TriangleEdit::Finish() {
    TriangleContent content = std::move(before);
    before = TriangleContent();
    // Elements that were both added and removed are in neither state.
    const auto dropTemporary =
        [](std::vector<uint32_t>& numbers, uint32_t limit, auto& first, auto& second) {
            std::size_t kept = 0;
            for (std::size_t i = 0; i < numbers.size(); ++i) {
                if (numbers[i] >= limit) continue;
                numbers[kept] = numbers[i];
                first[kept] = first[i];
                if (!second.empty()) second[kept] = second[i];
                ++kept;
            }
            numbers.resize(kept);
            first.resize(kept);
            if (!second.empty()) second.resize(kept);
            numbers.shrink_to_fit();
            first.shrink_to_fit();
            second.shrink_to_fit();
        };
    dropTemporary(content.vertexNumbers,
                  std::max(content.vertexCount, level.VertexCount()),
                  content.vertices,
                  content.colors);
    dropTemporary(content.faceNumbers,
                  std::max(content.faceCount, level.faceCount),
                  content.faces,
                  content.attributes);
    return content;
}

std::vector<uint32_t> TriangleEdit::Exchange(LevelMesh& level,
                                             SurfaceAttributes& attributes,
                                             TriangleContent& content) {
    TriangleStorage storage(level, attributes);
    TriangleContent now;
    now.vertexCount = level.VertexCount();
    now.faceCount = level.faceCount;
    now.uvCount = attributes.uvs.size();
    now.vertices.resize(content.vertexNumbers.size());
    now.faces.resize(content.faceNumbers.size());
    now.colors.resize(content.colors.size());
    now.attributes.resize(content.attributes.size());
    const bool hasUvs = !attributes.cornerUvs.empty();
    const std::size_t commonUvs = std::min(now.uvCount, content.uvCount);
    if (hasUvs && now.uvCount > commonUvs)
        now.uvs.assign(attributes.uvs.begin() + static_cast<std::ptrdiff_t>(commonUvs),
                       attributes.uvs.end());
    storage.Reserve(std::max(now.vertexCount, content.vertexCount),
                    std::max(now.faceCount, content.faceCount),
                    content.uvCount);

    std::vector<uint32_t> faces;
    faces.reserve(content.faceNumbers.size());
    for (std::size_t i = 0; i < content.vertexNumbers.size(); ++i) {
        const uint32_t vertex = content.vertexNumbers[i];
        if (vertex >= now.vertexCount) continue;
        now.vertices[i] = storage.Read(vertex);
        if (!now.colors.empty()) now.colors[i] = attributes.colors[vertex];
        if (vertex >= content.vertexCount) storage.DropVertex(vertex);
    }
    for (std::size_t i = 0; i < content.faceNumbers.size(); ++i) {
        const uint32_t face = content.faceNumbers[i];
        if (face >= now.faceCount) continue;
        now.faces[i] = storage.ReadFace(face);
        if (!now.attributes.empty()) now.attributes[i] = storage.ReadAttributes(face);
        if (face >= content.faceCount) storage.DropFace(face);
    }
    storage.SetVertexCount(content.vertexCount);
    storage.SetFaceCount(content.faceCount);
    for (std::size_t i = 0; i < content.vertexNumbers.size(); ++i) {
        const uint32_t vertex = content.vertexNumbers[i];
        if (vertex >= content.vertexCount) continue;
        storage.Write(vertex, content.vertices[i]);
        if (!content.colors.empty()) attributes.colors[vertex] = content.colors[i];
    }
    for (std::size_t i = 0; i < content.faceNumbers.size(); ++i) {
        const uint32_t face = content.faceNumbers[i];
        if (face >= content.faceCount) continue;
        storage.WriteFace(face, content.faces[i]);
        if (!content.attributes.empty()) storage.WriteAttributes(face, content.attributes[i]);
        faces.push_back(face);
    }
    if (hasUvs) {
        attributes.uvs.resize(commonUvs);
        attributes.uvs.insert(attributes.uvs.end(), content.uvs.begin(), content.uvs.end());
    }
    now.vertexNumbers = std::move(content.vertexNumbers);
    now.faceNumbers = std::move(content.faceNumbers);
    content = std::move(now);
    MakeSet(faces);
    return faces;
}

}  // namespace trovik
