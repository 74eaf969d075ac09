// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/fixture/StrokeBench.h"
#include "tests/random/RandomNumbers.h"

#include <memory>
#include <string>

namespace trovik::test {

/// A bench whose mesh, placement, freeze, layer and bound level were drawn.
class RandomBench {
public:
    explicit RandomBench(RandomNumbers& numbers);

    /// Draws a tool, its settings, the host's switches and some dabs, and runs the stroke.
    void Stroke();
    /// What was drawn last, for the trace.
    const std::string& Story() const { return story; }

    StrokeBench& Bench() { return *bench; }

private:
    void DrawTool();
    void DrawStamp();
    void DrawMirror();
    Matrix DrawStampMatrix();
    bool MovesByDistance() const;
    bool LayerIsMild() const;
    SurfacePoint DrawHit();
    float DrawRadius();
    float DrawStrength();
    void Dab(const SurfacePoint& hit);
    void DabWithMirror();
    void ApplyToAll();

    RandomNumbers& random;
    std::string story;
    std::unique_ptr<StrokeBench> bench;
    float extent = 1.0f;
    Vector middle;
    Tool tool{};
    bool mirrored = false;
};

/// Gives process-wide switches their values back: preferences, test mode, camera, facing angle.
class HostSwitches {
public:
    HostSwitches();
    ~HostSwitches();
    void Draw(RandomNumbers& random);
    HostSwitches(const HostSwitches&) = delete;
    HostSwitches& operator=(const HostSwitches&) = delete;
};

}  // namespace trovik::test
