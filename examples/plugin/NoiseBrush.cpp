// SPDX-License-Identifier: Apache-2.0

/// \file
/// A plug-in with one tool, "Noise", which roughens the surface: each vertex under the brush moves
/// along its normal by a smooth random amount. docs/embedding.md explains each part.
#include "host/BrushOperation.h"
#include "host/Contract.h"
#include "host/Plugin.h"

#include <cmath>
#include <memory>
#include <unordered_map>
#include <vector>

TROVIK_PLUGIN_CONTRACT

namespace {

using namespace trovik;

/// Size of the grain as a fraction of the brush radius.
constexpr float grainPerRadius = 0.25f;
/// Largest displacement of one dab as a fraction of its strength.
constexpr float amplitude = 0.1f;

/// A random number from -1 to 1 for a point of the integer lattice.
float LatticeValue(int32_t x, int32_t y, int32_t z) {
    uint32_t h = static_cast<uint32_t>(x) * 0x8da6b343u ^ static_cast<uint32_t>(y) * 0xd8163841u ^
                 static_cast<uint32_t>(z) * 0xcb1ab31fu;
    h = (h ^ (h >> 15)) * 0x2c1b3c6du;
    h = (h ^ (h >> 12)) * 0x297a2d39u;
    return static_cast<float>(h >> 8) * (2.0f / 16777216.0f) - 1.0f;
}

/// Value noise: the values at the corners of a lattice cell, blended smoothly; see Perlin: "An
/// Image Synthesizer" (1985).
float Noise(const Vector& p) {
    const float limit = 1e6f;
    if (!(std::fabs(p.x) < limit && std::fabs(p.y) < limit && std::fabs(p.z) < limit)) return 0.0f;
    const Vector low(std::floor(p.x), std::floor(p.y), std::floor(p.z));
    const auto smooth = [](float t) { return t * t * (3.0f - 2.0f * t); };
    const float u = smooth(p.x - low.x), v = smooth(p.y - low.y), w = smooth(p.z - low.z);
    float sum = 0.0f;
    for (int corner = 0; corner < 8; ++corner) {
        const int dx = corner & 1, dy = (corner >> 1) & 1, dz = corner >> 2;
        const float weight =
            (dx != 0 ? u : 1.0f - u) * (dy != 0 ? v : 1.0f - v) * (dz != 0 ? w : 1.0f - w);
        sum += weight * LatticeValue(static_cast<int32_t>(low.x) + dx,
                                     static_cast<int32_t>(low.y) + dy,
                                     static_cast<int32_t>(low.z) + dz);
    }
    return sum;
}

/// The faces around a vertex.
struct FaceCollector final : AdjacentVertexEnumerator {
    std::vector<uint32_t> faces;
    void Operator(uint32_t, uint32_t face) override {
        for (const uint32_t known : faces)
            if (known == face) return;
        faces.push_back(face);
    }
};

class NoiseBrush final : public BrushOperation, public FaceEnumerator, public MeshUnlocker {
public:
    NoiseBrush() { directionAttribute.SetVisible(false); }

    void BeginStroke(Mesh* strokeMesh, Modifier modifier, TriggerType trigger) override {
        BrushOperation::BeginStroke(strokeMesh, modifier, trigger);
        grain = 0.0f;
        // While a stroke is open, the mesh is locked and has a change that collects undo records.
        if (trigger != TriggerStroke || strokeMesh == nullptr || !strokeMesh->Lock(this)) return;
        try {
            change.reset(strokeMesh->StartChange());
        } catch (...) {
            // EndStroke is not called after an exception in BeginStroke.
            strokeMesh->Unlock();
            throw;
        }
        if (change == nullptr)
            strokeMesh->Unlock();
        else
            mesh = strokeMesh;
    }

    void ApplyDab(const SurfacePoint& hit,
                  const Vector& position,
                  float size,
                  float,
                  float strength,
                  AxisAlignedBoundingBox& box) override {
        if (mesh == nullptr || hit.mesh != mesh || !(size > 0.0f)) return;
        // The host does not start strokes on a layer that refuses changes, but one may be protected
        // during a stroke.
        Layer* layer = mesh->Layer();
        if (layer != nullptr && !layer->Writable()) return;
        if (grain == 0.0f) grain = size * grainPerRadius;
        center = position;
        radius = size;
        reached.clear();
        mesh->EnumerateFaces(hit.face, this, 0);
        const Store<float>& falloff = FalloffData();
        const float sign = IsInverted() ? -1.0f : 1.0f;
        for (const auto& [vertex, at] : reached) {
            StoredVertexInfo& record = RecordOf(vertex, at.face, layer != nullptr);
            if (at.distance > radius || falloff.fill == 0) continue;
            const auto sample =
                static_cast<uint32_t>(at.distance / radius * static_cast<float>(falloff.fill - 1));
            const Vertex& own = mesh->vertices.array[vertex];
            const float mask =
                1.0f - static_cast<float>(own.freeze & freezeAmountMask) * freezeAmountToWeight;
            // The position at the start of the stroke, so that the pattern does not change as the
            // surface moves; on a mirrored side, the same point of the main side.
            const float* start = record.originalPosition;
            Vector source(start[0], start[1], start[2]);
            if (hit.mirror) source = MirrorConfig().Transform(source, 1.0f, &hit);
            const float length = sign * strength * amplitude * falloff.array[sample] * mask *
                                 Noise(ToWorld(source, 1.0f) * (1.0f / grain));
            if (length != 0.0f) Move(vertex, record, layer, length);
            const Vertex& moved = mesh->vertices.array[vertex];
            box.Extend(ToWorld({moved.x, moved.y, moved.z}, 1.0f));
        }
        for (const auto& [vertex, at] : reached) UpdateNormal(vertex, at.face);
    }

    void EndStroke() override {
        BrushOperation::EndStroke();
        if (mesh == nullptr) return;
        change->Finish(true, false);
        change.reset();
        Mesh* finished = mesh;
        mesh = nullptr;
        finished->Unlock();
        finished->ContentChanged();
    }

    /// Visits the faces that have a vertex under the brush, and collects the vertices of these
    /// faces; the normals of all of them change.
    bool Tester(Mesh* walked, uint32_t face) override {
        const uint32_t corners = walked->CornersPerFace();
        const uint32_t* vertices = walked->faceVertexIndices.array + std::size_t{face} * corners;
        std::vector<Reached> found(corners);
        bool isUnderBrush = false;
        for (uint32_t k = 0; k < corners; ++k) {
            const Vertex& v = walked->vertices.array[vertices[k]];
            found[k] = {face, (ToWorld({v.x, v.y, v.z}, 1.0f) - center).Length()};
            isUnderBrush = isUnderBrush || found[k].distance <= radius;
        }
        if (!isUnderBrush) return false;
        for (uint32_t k = 0; k < corners; ++k) reached.try_emplace(vertices[k], found[k]);
        return true;
    }
    void Operator(Mesh*, uint32_t) override {}
    bool IsStrokeFree() override { return mesh == nullptr; }

    const ClassDesc* RuntimeClass() const override;

private:
    struct Reached {
        uint32_t face = 0;
        float distance = 0.0f;
    };

    Vector ToWorld(const Vector& p, float w) const {
        Vector world;
        mesh->Geometry()->Transformation()->LocalToWorld(&world, &p, w);
        return world;
    }

    /// Returns the undo record of a vertex, and creates it if necessary. A vertex must have a
    /// record before its position or normal changes.
    StoredVertexInfo& RecordOf(uint32_t vertex, uint32_t face, bool withLayerSlot) {
        Vertex& own = mesh->vertices.array[vertex];
        if (own.changeLink < *change->recordCount &&
            mesh->changeRecords[own.changeLink].vertexIndex == vertex)
            return mesh->changeRecords[own.changeLink];
        return change->Add_uncached(vertex, face, own, withLayerSlot);
    }

    /// \param length  in world units.
    void Move(uint32_t vertex, const StoredVertexInfo& record, Layer* layer, float length) {
        const PackedNormal& packed = mesh->vertexNormals.array[vertex];
        const Vector normal = Vector(packed.x, packed.y, packed.z).Normalized();
        const float scale = ToWorld(normal, 0.0f).Length();
        if (!(scale > 0.0f)) return;
        const Vector delta = normal * (length / scale);
        if (layer != nullptr) {
            Vector offset;
            layer->get(&offset, record.layerSlot);
            offset += delta;
            layer->set(nullptr, record.layerSlot, vertex, &offset, true);
            return;
        }
        Vertex& own = mesh->vertices.array[vertex];
        own.x += delta.x;
        own.y += delta.y;
        own.z += delta.z;
    }

    void UpdateNormal(uint32_t vertex, uint32_t face) {
        FaceCollector around;
        mesh->EnumerateAdjacentVertices(&around, vertex, face);
        Vector sum;
        for (const uint32_t one : around.faces) {
            Vector normal;
            mesh->FaceNormal(&normal, one);
            sum += normal;
        }
        const Vector unit = sum.Normalized() * 32767.0f;
        PackedNormal& packed = mesh->vertexNormals.array[vertex];
        packed.x = static_cast<int16_t>(std::lround(unit.x));
        packed.y = static_cast<int16_t>(std::lround(unit.y));
        packed.z = static_cast<int16_t>(std::lround(unit.z));
    }

    Mesh* mesh = nullptr;
    std::unique_ptr<MeshChange> change;
    float grain = 0.0f;
    Vector center;
    float radius = 0.0f;
    std::unordered_map<uint32_t, Reached> reached;
};

Node* Create(unsigned count) { return count < 2 ? new NoiseBrush : new NoiseBrush[count]; }

const ClassDesc noiseClass(BrushOperation::StaticClass(),
                           BrushOperation::StaticClass(),
                           QStringLiteral("NoiseBrush"),
                           QStringLiteral("Noise brush"),
                           &Create,
                           0,
                           1);

const ClassDesc* NoiseBrush::RuntimeClass() const { return &noiseClass; }

const Plugin plugin(QStringLiteral("Noise"),
                    QStringLiteral("An example of a brush plug-in"),
                    QStringLiteral("The Trovik developers"),
                    QStringLiteral("https://trovik.invalid"),
                    QStringLiteral(__DATE__),
                    [] {
                        BrushOperation::AddConfiguration(new BrushConfiguration(
                            &noiseClass,
                            0,
                            QStringLiteral("Noise"),
                            QStringLiteral("Noise"),
                            PredefinedCategory::Sculpt,
                            QStringLiteral("Roughens the surface with a random pattern whose grain "
                                           "is a quarter of the brush radius."),
                            0));
                    });

}  // namespace
