// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/layers/LayerStack.h"
#include "tests/random/RandomStroke.h"

#include <memory>
#include <string>

namespace trovik::test {

/// Draws a mesh, and edits of it that each become one undo step: strokes of the brush, freezing,
/// hidden faces, layers, levels, transformations.
class RandomEdits {
public:
    explicit RandomEdits(RandomNumbers& numbers);

    /// One edit; some draw nothing to do and leave no step.
    void Edit();

    LevelGeometry& Geometry() { return geometry; }
    /// What was drawn last, for the trace.
    std::string Story() const;

private:
    float Reach() const;
    bool MayStroke() const;
    void Push(std::unique_ptr<UndoStep> step);
    void Freeze();
    void Hide();
    void Level();
    void Unsubdivide();
    void Transform();
    void Layer();
    void MergeOrErase(SculptLayer& layer, const LayerGround::Layers& layers);

    RandomNumbers& random;
    RandomBench drawn;
    LevelGeometry& geometry;
    float reach = 0.0f;
    int named = 0;
    /// Of the current edit, for the trace.
    uint32_t kind = 0;
    uint32_t layerKind = 0;
};

}  // namespace trovik::test
