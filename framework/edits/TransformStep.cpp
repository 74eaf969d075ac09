// SPDX-License-Identifier: Apache-2.0
#include "framework/math/SameBits.h"
#include "framework/multires/Steps.h"

namespace trovik {

namespace {

class TransformStep : public UndoStep {
public:
    explicit TransformStep(const MatrixTransform& transformBefore) : other(transformBefore) {
        label = "Transform";
    }

    void Apply(LevelGeometry& geometry) override {
        const MatrixTransform present = geometry.Transform();
        geometry.Transform() = other;
        other = present;
    }

    uint64_t Bytes() const override { return sizeof(TransformStep) + label.capacity(); }

private:
    MatrixTransform other;
};

bool Same(const MatrixTransform& a, const MatrixTransform& b) {
    Vector scaleA;
    Vector scaleB;
    a.Scale(&scaleA);
    b.Scale(&scaleB);
    return SameBits(a.ToWorld(), b.ToWorld()) && SameBits(a.ToLocal(), b.ToLocal()) &&
           SameBits(scaleA, scaleB);
}

}  // namespace

std::unique_ptr<UndoStep> MakeTransformStep(const LevelGeometry& geometry,
                                            const MatrixTransform& transformBefore) {
    if (Same(geometry.Transform(), transformBefore)) return nullptr;
    return std::make_unique<TransformStep>(transformBefore);
}

}  // namespace trovik
