// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/HostChanges.h"

#include <algorithm>

namespace trovik {

namespace {

/// Replaces states with later ones. If the later state has no mirror, the stored mirror is kept.
/// The brush requests the mirror in only one mirror mode; when that mode becomes active again, the
/// mirror is written again only if it has changed.
void Replace(HostChanges::States& states, HostChanges::States by) {
    for (std::size_t i = 0; i < std::min(states.size(), by.size()); ++i) {
        const auto mirror = states[i].find(mirrorCornersFile);
        if (mirror != states[i].end()) by[i].insert(*mirror);
    }
    states = std::move(by);
}

bool Differ(const MeshStateHashes& before, const MeshStateHashes& now) {
    const auto isKnown = [&before](const auto& file) {
        const auto found = before.find(file.first);
        return found != before.end() && found->second == file.second;
    };
    const auto isThere = [&now](const auto& file) {
        return file.first == mirrorCornersFile || now.count(file.first) != 0;
    };
    return !std::all_of(now.begin(), now.end(), isKnown) ||
           !std::all_of(before.begin(), before.end(), isThere);
}

bool Differ(const HostChanges::States& before, const HostChanges::States& now, std::size_t mesh) {
    return mesh >= before.size() || Differ(before[mesh], now[mesh]);
}

}  // namespace

void HostChanges::Start(States now) {
    Replace(known, std::move(now));
    seen = known;
    command = "host";
    reasons.clear();
    forced.clear();
    watching = true;
}

void HostChanges::Notice(States now) {
    reasons.resize(std::max(reasons.size(), now.size()));
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (!Differ(seen, now, i)) continue;
        if (reasons[i].empty() || reasons[i].back() != command) reasons[i].push_back(command);
    }
    Replace(seen, std::move(now));
}

void HostChanges::Command(const std::string& name, States now) {
    Notice(std::move(now));
    command = name;
}

void HostChanges::Absorb(const States& now) {
    for (std::size_t i = 0; i < std::min(known.size(), now.size()); ++i)
        if (i < seen.size() && !Differ(known[i], seen[i])) known[i] = now[i];
    Replace(seen, now);
}

void HostChanges::Force(std::size_t mesh, const std::string& reason) {
    forced.insert(mesh);
    reasons.resize(std::max(reasons.size(), mesh + 1));
    reasons[mesh].push_back(reason);
}

std::vector<HostChanges::Change> HostChanges::Find(const States& now) {
    Notice(now);
    std::vector<Change> changes;
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (forced.count(i) == 0 && !Differ(known, now, i)) continue;
        Change change{i, {}};
        for (const std::string& name : reasons[i])
            change.reason += (change.reason.empty() ? "" : ", ") + name;
        changes.push_back(std::move(change));
    }
    return changes;
}

void HostChanges::ClearMirror(std::size_t mesh) {
    if (mesh < known.size()) known[mesh].erase(mirrorCornersFile);
}

}  // namespace trovik
