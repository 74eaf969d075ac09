// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/fixture/StrokeFixture.h"
#include "tests/random/RandomNumbers.h"

#include <memory>
#include <string>

namespace trovik::test {

/// A fixture with a random mesh, transform, mask, layer and bound level.
class RandomStrokeFixture {
public:
    explicit RandomStrokeFixture(RandomNumbers& numbers);

    /// Chooses a random tool, settings, host switches and dabs, and runs the stroke.
    void Stroke();
    /// Describes the last stroke, for failure messages.
    const std::string& CaseDescription() const { return story; }

    StrokeFixture& Bench() { return *bench; }

private:
    void ChooseTool();
    void ChooseStamp();
    void ChooseMirror();
    Matrix ChooseStampMatrix();
    bool MovesByDistance() const;
    bool HasMildLayer() const;
    SurfacePoint ChooseHit();
    float ChooseRadius();
    float ChooseStrength();
    void Dab(const SurfacePoint& hit);
    void DabWithMirror();
    void ApplyToAll();

    RandomNumbers& random;
    std::string story;
    std::unique_ptr<StrokeFixture> bench;
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
