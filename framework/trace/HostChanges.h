// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/trace/MeshState.h"

#include <set>
#include <string>
#include <vector>

namespace trovik {

/// Detects the meshes that the host changes between two calls into the brush, and the commands that
/// change them. It compares hashes of mesh states, so any kind of change is detected; commands only
/// supply the names of the changes.
///
/// States are lists with one entry per mesh, in the order of the scene.
class HostChanges {
public:
    using States = std::vector<MeshStateHashes>;
    struct Change {
        std::size_t mesh;
        /// Names of the commands that changed the mesh, in order, separated by ", ".
        std::string reason;
    };

    /// Starts the detection.
    /// \param now  the states that the trace already contains. Changes made before the first
    /// command are attributed to "host".
    void Start(States now);
    void Stop() { watching = false; }
    bool IsWatching() const { return watching; }
    /// Call this before a command runs. \param now  the current states; changes up to this point
    /// are attributed to the previous command.
    void Command(const std::string& name, States now);
    /// Ignores changes since the last command, because a separate trace line describes them.
    void Absorb(const States& now);
    /// Makes the next call to Find report the mesh, whether or not its state has changed.
    void Force(std::size_t mesh, const std::string& reason);
    /// Returns the meshes whose state differs from that in the trace.
    std::vector<Change> Find(const States& now);
    /// Records that this mesh's state in the trace no longer includes the mirror.
    void ClearMirror(std::size_t mesh);

private:
    void Notice(States now);

    bool watching = false;
    /// The states in the trace, and those at the last command.
    States known, seen;
    std::string command;
    /// Command names, by mesh.
    std::vector<std::vector<std::string>> reasons;
    std::set<std::size_t> forced;
};

}  // namespace trovik
