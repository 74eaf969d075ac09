// SPDX-License-Identifier: Apache-2.0

/// \file Writes the mesh states of a trace, and the lines for changes that the host makes between
/// calls.
#include "framework/brushes/BrushSettings.h"
#include "framework/trace/BrushSettingsText.h"
#include "framework/trace/MeshState.h"
#include "framework/trace/TraceFolder.h"
#include "framework/trace/TraceRecorder.h"

#include <algorithm>

namespace trovik {

namespace {

constexpr const char* settling = "SettleSymmetry";

std::string MeshName(std::size_t mesh) { return "m" + std::to_string(mesh); }

bool MirrorsByTopology(BrushOperation& brush) {
    return brush.MirrorConfig().MirrorMode() == MirrorConfiguration::Topological;
}

}  // namespace

void TraceRecorder::BeforeCommand(BrushOperation& brush, const std::string& name) {
    Guarded([&] {
        if (!begun) return;
        HostChanges::States now = HashStates(brush);
        if (!hostChanges.IsWatching()) hostChanges.Start(now);
        hostChanges.Command(name, std::move(now));
    });
}

void TraceRecorder::AfterSettling(BrushOperation& brush,
                                  const LevelMesh& mesh,
                                  const std::vector<uint32_t>& vertices) {
    Guarded([&] {
        const std::vector<LevelGeometry*> geometries = SceneGeometries();
        const auto found = std::find(geometries.begin(), geometries.end(), &mesh.Hierarchy());
        if (!begun || found == geometries.end()) return;
        std::vector<std::string> numbers, positions;
        for (const uint32_t vertex : vertices) {
            numbers.push_back(std::to_string(vertex));
            positions.push_back(JsonVector(mesh.Position(vertex)));
        }
        Settled line;
        line.in.Set("mesh", MeshIdText(&mesh));
        line.out.Set("vertices", JsonList(numbers));
        line.out.Set("positions", JsonList(positions));
        line.mesh = static_cast<std::size_t>(found - geometries.begin());
        line.hasLayer = mesh.ActiveLayer() != nullptr;
        settled.push_back(std::move(line));
        if (hostChanges.IsWatching()) hostChanges.Absorb(HashStates(brush));
    });
}

HostChanges::States TraceRecorder::HashStates(BrushOperation& brush) const {
    HostChanges::States states;
    for (LevelGeometry* geometry : SceneGeometries())
        states.push_back(HashMeshState(
            *geometry, dynamic_cast<const MeshUnlocker*>(&brush), MirrorsByTopology(brush)));
    return states;
}

void TraceRecorder::WriteState(const std::string& name,
                               std::size_t mesh,
                               BrushOperation& brush) const {
    WriteMeshState(options.folder + "/" + name + "/" + MeshName(mesh),
                   *SceneGeometries()[mesh],
                   dynamic_cast<const MeshUnlocker*>(&brush),
                   MirrorsByTopology(brush));
}

void TraceRecorder::WriteStates(const std::string& name, BrushOperation& brush) {
    for (std::size_t i = 0; i < SceneGeometries().size(); ++i) WriteState(name, i, brush);
}

void TraceRecorder::WriteHostChanges(BrushOperation& brush) {
    if (!hostChanges.IsWatching()) return;
    for (const HostChanges::Change& change : hostChanges.Find(HashStates(brush))) {
        const std::string state = NumberedTraceFolder("change", ++changeCount);
        WriteState(state, change.mesh, brush);
        if (!MirrorsByTopology(brush)) hostChanges.ClearMirror(change.mesh);
        JsonFields in;
        in.Set("mesh", JsonString(MeshName(change.mesh)));
        in.Set("reason", JsonString(change.reason));
        in.Set("state", JsonString(state));
        WriteCall("HostChange", in, {});
    }
}

// The line contains only positions, which determine the normals. If the mesh has a layer, a
// complete state is also written, because the layer's offsets are not on the line.
void TraceRecorder::WriteSettled() {
    for (const Settled& line : settled) {
        WriteCall(settling, line.in, line.out);
        if (line.hasLayer) hostChanges.Force(line.mesh, settling);
    }
    settled.clear();
}

void TraceRecorder::WriteAfter(BrushOperation& brush) {
    ThrowIfFailed();
    if (begun)
        WriteHostChanges(brush);
    else
        WriteStates("before", brush);
    WriteStates("after", brush);
}

}  // namespace trovik
