// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/trace/MeshState.h"

#include <set>
#include <string>
#include <vector>

namespace trovik {

/// Finds the meshes that the host changes between two calls into the brush, and the commands that
/// change them. It compares hashes of mesh states, so any kind of change is found; commands only
/// name the changes.
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

    /// Begins to watch. \param now  the states that a reader of the trace has. Changes before the
    /// first command are attributed to "host".
    void Start(States now);
    void Stop() { watching = false; }
    bool IsWatching() const { return watching; }
    /// A command is about to run. \param now  the present states: what has changed until now is
    /// attributed to the command before.
    void Command(const std::string& name, States now);
    /// A line of its own describes what has changed since the last command.
    void Absorb(const States& now);
    /// The next Find reports the mesh, whatever its state.
    void Force(std::size_t mesh, const std::string& reason);
    /// The meshes whose state is not the one that a reader has.
    std::vector<Change> Find(const States& now);
    /// A state of this mesh without its mirror replaces the one that a reader has.
    void ForgetMirror(std::size_t mesh);

private:
    void Notice(States now);

    bool watching = false;
    /// What a reader has, and what the last command found.
    States known, seen;
    std::string command;
    /// By mesh.
    std::vector<std::vector<std::string>> reasons;
    std::set<std::size_t> forced;
};

}  // namespace trovik
