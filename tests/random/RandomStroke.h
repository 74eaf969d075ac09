// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/fixture/StrokeBench.h"
#include "tests/random/RandomNumbers.h"

#include <memory>
#include <string>

namespace trovik::test {

/// A bench with a random mesh, transform, mask, layer and bound level.
class RandomBench {
public:
    explicit RandomBench(RandomNumbers& numbers);

    /// Chooses a random tool, settings, host switches and dabs, and runs the stroke.
    void Stroke();
    /// Describes the last stroke, for failure messages.
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

/// Restores process-wide switches: preferences, test mode, camera, facing angle.
class HostSwitches {
public:
    HostSwitches();
    ~HostSwitches();
    void Draw(RandomNumbers& random);
    HostSwitches(const HostSwitches&) = delete;
    HostSwitches& operator=(const HostSwitches&) = delete;
};

}  // namespace trovik::test
