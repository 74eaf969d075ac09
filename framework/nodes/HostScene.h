// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/math/MatrixTransform.h"

#include <algorithm>
#include <vector>

namespace trovik {

/// A camera with its own transform; it looks along its local -z axis, with +y up.
class HostCamera : public Camera {
public:
    trovik::Transformation* Transformation() const override {
        return const_cast<MatrixTransform*>(&placement);
    }
    MatrixTransform& Transform() { return placement; }
    /// Whether lines of sight are parallel to the view direction. The position of the camera is
    /// then far away; see StrokeView::BrushCameraToWorld.
    bool IsOrthographic() const { return isOrthographic; }
    void SetOrthographic(bool on) { isOrthographic = on; }

private:
    MatrixTransform placement;
    bool isOrthographic = false;
};

/// The scene: its current geometries, which are borrowed, and its active camera, which is never
/// null.
class HostScene : public Scene {
public:
    unsigned GeometryCount() const override { return static_cast<unsigned>(geometries.size()); }
    Geometry* GeometryAt(unsigned index) const override {
        return index < geometries.size() ? geometries[index] : nullptr;
    }
    /// Null selects the scene's own camera.
    void SetActiveCamera(Camera* camera) override {
        active = camera == nullptr ? &ownCamera : camera;
    }
    Camera* ActiveCamera() const override { return active; }

    HostCamera& OwnCamera() { return ownCamera; }
    void AddGeometry(Geometry* geometry) { geometries.push_back(geometry); }
    void RemoveGeometry(Geometry* geometry) { std::erase(geometries, geometry); }

private:
    std::vector<Geometry*> geometries;
    HostCamera ownCamera;
    Camera* active = &ownCamera;
};

}  // namespace trovik
