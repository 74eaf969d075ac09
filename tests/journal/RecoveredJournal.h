// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/errors/HostError.h"
#include "framework/script/JournalRecovery.h"
#include "framework/script/ScriptDocument.h"
#include "framework/strokes/DabAtHit.h"
#include "framework/strokes/DabStrength.h"
#include "tests/journal/JournalWork.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace trovik::test {

inline nlohmann::json Stroke(float x, float y) {
    return {{"stroke", {{"surface", {{x, y, 1.0f, 0.5f}, {-x, 0.5f * y, 1.0f}}}}}};
}

inline nlohmann::json Tool(const char* name) {
    return {{"tool", name}, {"set", {{"radius", 0.3}, {"strength", 40}}}};
}

class RecoveredJournal : public ::testing::Test {
protected:
    /// Runs the steps with a journal, up to the end of the script or an error.
    void Run(const nlohmann::json& steps) {
        script = FillScript(folder, steps);
        ScriptRunner runner(script, folder.Path(""), {});
        runner.SetJournal({Journal(), false});
        try {
            runner.Run();
        } catch (const HostError& error) {
            failure = error.what();
        }
    }

    /// Opens the cube for work that is done step by step.
    std::unique_ptr<ScriptRunner> Open(const nlohmann::json& mirror = {"x"}) {
        script = FillScript(folder, nlohmann::json::array(), mirror);
        auto runner = std::make_unique<ScriptRunner>(script, folder.Path(""), ScriptProgress{});
        runner->SetJournal({Journal(), false});
        runner->Open(ReadStrokeScript(script));
        return runner;
    }

    std::string Journal() const { return folder.Path("work.journal"); }
    std::string Scene(const std::string& name) const { return folder.Path(name + ".trovik"); }
    std::string Recovered() {
        RecoverJournal(Journal(), Scene("recovered"));
        return TemporaryFolder::Content(Scene("recovered"));
    }

    QuickDisk disk;
    TemporaryFolder folder;
    std::string script;
    std::string failure;
};

/// Applies dabs on the surface directly through the loop, as a program with a pointer does.
inline void DabThroughTheLoop(Document& document, float x, float y) {
    const auto hit = HitNear(document.Geometry(), document.Tree(), Vector(x, y, 1.0f));
    ASSERT_TRUE(hit.has_value());
    StrokeDab dab = DabAt(document.Geometry(), *hit);
    dab.size = 0.3f;
    dab.pressure = 0.7f;
    dab.strength = DabStrength(document.Brush(), dab.pressure, dab.size);
    dab.heading = Vector(1.0f, 0.0f, 0.0f);
    document.Loop().Dab(dab);
}

}  // namespace trovik::test
