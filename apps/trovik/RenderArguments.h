// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/render/RenderImage.h"
#include "framework/strokes/StrokePath.h"

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

/// Adds the options for the camera and the image only: without --levels, --quiet and --json.
/// \return the options, for further conditions.
std::vector<CLI::Option*> AddCameraAndPictureArguments(CLI::App& command,
                                                       RenderArguments& arguments);

/// Returns the options of a render.
/// \throw HostError for a matcap in combination with another shading mode.
RenderOptions PictureOptionsOf(const RenderArguments& arguments);

/// Checks the directions --from and --up, before any work is done.
/// \throw HostError if one of them is zero.
void CheckCameraArguments(const RenderArguments& arguments);

/// Returns the camera from the first of these sources that is available: --eye, --from, the scene's
/// view, the default direction.
/// \param frames  the number of frames of a turntable, all of which show the whole mesh if the
/// camera frames it; 1 for other renders.
/// \param sceneView  the view stored in a scene; null if there is none.
RenderCamera CameraFor(const RenderArguments& arguments,
                       int frames,
                       const RenderMesh& shown,
                       const StrokeView* sceneView);

/// Checks the camera that CameraFor returned.
/// \throw HostError if it cannot be used (CheckCamera), or if --up is parallel to the line of
/// sight.
void CheckRenderCamera(const RenderArguments& arguments, const RenderCamera& camera);

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
