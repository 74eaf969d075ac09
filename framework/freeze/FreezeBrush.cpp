// SPDX-License-Identifier: Apache-2.0
#include "framework/freeze/FreezeBrush.h"

#include "framework/multires/Steps.h"
#include "framework/strokes/DabWeights.h"

#include <algorithm>

namespace trovik {

namespace {

constexpr float percent = 0.01f;

/// Sums the mask weights of a vertex's neighbours.
class WeightSum final : public AdjacentVertexEnumerator {
public:
    explicit WeightSum(const FreezeRecords& strokeRecords) : records(strokeRecords) {}
    void Operator(uint32_t vertex, uint32_t) override {
        sum += records.Share(vertex);
        ++count;
    }

    float sum = 0.0f;
    uint32_t count = 0;

private:
    const FreezeRecords& records;
};

}  // namespace

FreezeBrush::FreezeBrush() {
    SetActiveConfiguration(Tool());
    SetBrushStrength(100.0f);
    // Freezing has no direction.
    directionAttribute.SetVisible(false);
}

FreezeBrush::~FreezeBrush() = default;

void FreezeBrush::BeginStroke(trovik::Mesh* mesh, Modifier modifier, TriggerType trigger) {
    BrushOperation::BeginStroke(mesh, modifier, trigger);
    level = dynamic_cast<LevelMesh*>(mesh);
    strokeModifier = modifier;
    falloff = &FalloffData();
    records = level == nullptr ? nullptr : std::make_unique<FreezeRecords>(*level);
    stamp.Read(*this);
}

float FreezeBrush::MeanAround(const FreezeReach& at) const {
    WeightSum sum(*records);
    level->EnumerateAdjacentVertices(&sum, at.vertex, at.face);
    return sum.count == 0 ? records->Share(at.vertex) : sum.sum / static_cast<float>(sum.count);
}

void FreezeBrush::ApplyDab(const SurfacePoint& hit,
                           const Vector&,
                           float size,
                           float,
                           float strength,
                           AxisAlignedBoundingBox& box) {
    if (level == nullptr || hit.mesh != level || !(size > 0.0f) || hit.face >= level->faceCount)
        return;
    const auto reached = VerticesUnderDab(*level, hit.face, hit.position, size);
    // No vertex has moved, so the pick tree does not need to be refitted after this traversal.
    level->ClearLastWalks();
    const FacingFactors facing(*this, *level, UsesFalloffBasedOnFacingAngle());
    const Matrix toPixels = MaskMatrix(stampMask);
    std::vector<float> weights(reached.size());
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const uint32_t vertex = reached[i].vertex;
        const float falloffWeight = FalloffAt(*falloff, reached[i].distance, size);
        const float weight = falloffWeight * (strength * percent) * facing.At(vertex);
        weights[i] = weight * stamp.WeightAt(level->Position(vertex), toPixels);
    }
    Apply(reached, weights, box);
}

void FreezeBrush::ApplyToWholeMesh(trovik::Mesh* mesh, float strength, bool byFacing) {
    if (level == nullptr || mesh != level) return;
    const FacingFactors facing(*this, *level, byFacing);
    const Matrix toPixels = MaskMatrix(stampMask);
    std::vector<FreezeReach> reached(level->VertexCount());
    std::vector<float> weights(level->VertexCount());
    for (uint32_t v = 0; v < level->VertexCount(); ++v) {
        reached[v] = {v, level->LowestFaceOf(v), 0.0f};
        weights[v] = strength * percent * stamp.WeightAt(level->Position(v), toPixels);
        weights[v] *= facing.At(v);
    }
    AxisAlignedBoundingBox box;
    Apply(reached, weights, box);
}

void FreezeBrush::Apply(const std::vector<FreezeReach>& reached,
                        const std::vector<float>& weights,
                        AxisAlignedBoundingBox& box) {
    // The whole dab is computed from the previous state, so that the result does not depend on the
    // traversal order.
    std::vector<float> maskWeights(reached.size());
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const float maskWeight = records->Share(reached[i].vertex);
        float target = 1.0f;
        if (strokeModifier == ModifierInvert) target = 0.0f;
        if (strokeModifier == ModifierSmooth) target = MeanAround(reached[i]);
        const float weight = weights[i] > 0.0f ? std::min(weights[i], 1.0f) : 0.0f;
        maskWeights[i] = maskWeight + (target - maskWeight) * weight;
    }
    const Matrix& toWorld = GeometryOf(*level).Transform().ToWorld();
    std::vector<uint32_t> changed;
    for (std::size_t i = 0; i < reached.size(); ++i) {
        const uint32_t vertex = reached[i].vertex;
        if (!(weights[i] > 0.0f) || level->IsVertexHidden(vertex)) continue;
        if (!records->SetWeight(vertex, maskWeights[i])) continue;
        changed.push_back(vertex);
        box.Extend(toWorld.AffineTransform(level->Position(vertex), 1.0f));
    }
    ReportMask(changed);
}

void FreezeBrush::ReportMask(const std::vector<uint32_t>& vertices) const {
    level->Hierarchy().ReportVertices(
        static_cast<uint32_t>(level->Index()), SurfaceChange::Mask, vertices);
}

void FreezeBrush::EndStroke() {
    BrushOperation::EndStroke();
    if (level == nullptr) return;
    auto step = MakeFreezeStep(*level, records->Vertices(), records->AmountsBefore());
    if (step != nullptr) {
        UndoHistory& history = GeometryOf(*level).History();
        level->ContentChanged();
        history.Push(std::move(step));
    }
    level = nullptr;
    records.reset();
}

void FreezeBrush::RevertBrushStroke() {
    if (level == nullptr) return;
    for (std::size_t i = 0; i < records->Vertices().size(); ++i)
        level->SetFreeze(records->Vertices()[i], records->AmountsBefore()[i]);
    ReportMask(records->Vertices());
    records = std::make_unique<FreezeRecords>(*level);
}

const ClassDesc* FreezeBrush::StaticClass() {
    static const ClassDesc desc(BrushOperation::StaticClass(),
                                BrushOperation::StaticClass(),
                                QStringLiteral("FreezeBrush"),
                                QStringLiteral("Freeze brush"),
                                nullptr,
                                0,
                                0);
    return &desc;
}
const ClassDesc* FreezeBrush::RuntimeClass() const { return StaticClass(); }

// Never destroyed: brushes refer to it until the process ends.
BrushConfiguration* FreezeBrush::Tool() {
    static auto* tool =
        new BrushConfiguration(StaticClass(),
                               0,
                               QStringLiteral("Freeze"),
                               QStringLiteral("Freeze"),
                               PredefinedCategory::Paint,
                               QStringLiteral("Protects the surface from being sculpted"),
                               0);
    return tool;
}

}  // namespace trovik
