// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentObserver.h"

#include <map>
#include <set>
#include <string>
#include <tuple>
#include <vector>

namespace trovik::python {

/// Collects the events of a document during a command, so that Python functions are called after
/// the command, when they may use the document.
class EventQueue final : public DocumentObserver {
public:
    /// Changed patches, combined for all changes with the same level, kind and patch level.
    struct Surface {
        bool all = false;
        std::set<uint32_t> patches;
    };
    /// Level, SurfaceChange::What, patch level.
    using SurfaceKey = std::tuple<uint32_t, uint8_t, uint32_t>;
    struct Events {
        std::map<SurfaceKey, Surface> surface;
        /// Names of the other events, without duplicates, in the order of their first occurrence.
        std::vector<std::string> names;
        std::vector<std::string> problems;
        bool modified = false;
    };

    /// Events are collected only while this is set.
    void Collect(bool on) { collects = on; }
    /// Returns the collected events and clears the queue.
    Events Take();

private:
    void SurfaceChanged(const SurfaceChange& change) override;
    void LevelsChanged() override { Add("levels"); }
    void LayersChanged() override { Add("layers"); }
    void HistoryChanged() override { Add("history"); }
    void ToolChanged() override { Add("tool"); }
    void CameraChanged() override { Add("camera"); }
    void ModifiedChanged(bool modified) override;
    void Problem(const std::string& message) override;
    void Add(const char* name);

    bool collects = false;
    Events events;
};

}  // namespace trovik::python
