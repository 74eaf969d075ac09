// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <string>
#include <vector>

namespace trovik {

class ProgressLine;

/// The arguments that the commands for renders share.
struct RenderArguments {
    std::string mesh;
    unsigned levels = 0;
    /// Each list has three numbers, or is empty if the option is not given.
    std::vector<float> from, eye, target, up;
    /// 0 if the option is not given.
    float fieldOfView = 0.0f;
    bool isOrthographic = false;
    std::string shading;
    RenderOptions options;
    bool quiet = false;
    bool json = false;
};

/// Adds the options for all members except `mesh`.
/// \param arguments  must outlive the parsing.
void AddRenderArguments(CLI::App& command, RenderArguments& arguments);

/// Returns the options of a render.
/// \throw HostError for a matcap in combination with another shading mode.
RenderOptions PictureOptionsOf(const RenderArguments& arguments);

/// Renders the frames of a turntable, or a single image.
/// \param options  the result of PictureOptionsOf.
/// \param names  a name for each frame, shown as progress; an empty name is not shown.
/// \param take  receives the number (from 0) and the image of each frame, in order.
/// \return the camera of the first frame.
/// \throw HostError; Cancelled.
RenderCamera RenderFrames(const RenderArguments& arguments,
                          const RenderOptions& options,
                          const std::vector<std::string>& names,
                          ProgressLine& line,
                          const std::function<void(std::size_t, const RenderImage&)>& take);

nlohmann::json CameraJson(const RenderCamera& camera);

}  // namespace trovik
