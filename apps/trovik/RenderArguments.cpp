// SPDX-License-Identifier: Apache-2.0
#include "RenderArguments.h"

#include "Interruption.h"
#include "MeshCommands.h"
#include "ProgressLine.h"
#include "framework/errors/HostError.h"
#include "framework/render/Matcap.h"
#include "framework/render/RenderMemory.h"
#include "framework/render/RenderRange.h"
#include "framework/render/RenderedLevel.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace trovik {

namespace {

Vector ToVector(const std::vector<float>& numbers) { return {numbers[0], numbers[1], numbers[2]}; }

/// Returns the direction given by three numbers, or `otherwise` if the list is empty.
Vector DirectionOr(const std::vector<float>& numbers, const char* option, const Vector& otherwise) {
    if (numbers.empty()) return otherwise;
    const Vector direction = ToVector(numbers);
    const float length = direction.Length();
    if (!(length > 0.0f) || !std::isfinite(length))
        throw HostError(std::string(option) + ": the direction must not be zero");
    return direction;
}

}  // namespace

void CheckCameraArguments(const RenderArguments& wanted) {
    DirectionOr(wanted.from, "--from", defaultDirection);
    DirectionOr(wanted.up, "--up", defaultDirection);
}

RenderCamera CameraFor(const RenderArguments& wanted,
                       int frames,
                       const RenderMesh& shown,
                       const StrokeView* sceneView) {
    const Vector up = DirectionOr(wanted.up, "--up", Vector(0.0f, 1.0f, 0.0f));
    const bool isSeen = sceneView != nullptr && wanted.from.empty() && wanted.eye.empty();
    float fieldOfView = isSeen ? sceneView->verticalFieldOfView : defaultFieldOfView;
    if (wanted.fieldOfView != 0.0f) fieldOfView = wanted.fieldOfView;
    if (isSeen)
        return {sceneView->eye,
                sceneView->target,
                wanted.up.empty() ? sceneView->up : up,
                fieldOfView,
                sceneView->isOrthographic || wanted.isOrthographic};
    RenderCamera camera = FrameTurntable(
        {shown},
        -DirectionOr(wanted.from, "--from", defaultDirection),
        fieldOfView,
        static_cast<float>(wanted.options.width) / static_cast<float>(wanted.options.height),
        up,
        frames,
        wanted.isOrthographic);
    if (wanted.eye.empty()) return camera;
    camera.eye = ToVector(wanted.eye);
    if (!wanted.target.empty()) camera.target = ToVector(wanted.target);
    camera.up = up;
    return camera;
}

void CheckRenderCamera(const RenderArguments& wanted, const RenderCamera& camera) {
    CheckCamera(camera);
    const Vector sight = camera.eye - camera.target;
    if (!wanted.up.empty() && !((camera.up.Normalized() & sight.Normalized()).Length() > 1e-4f))
        throw HostError("--up: the camera looks along its own up direction");
}

RenderOptions PictureOptionsOf(const RenderArguments& wanted) {
    RenderOptions options = wanted.options;
    if (!options.matcap.empty()) options.shading = ShadingMode::Matcap;
    if (!wanted.shading.empty()) options.shading = ShadingModeOf(wanted.shading);
    if (!options.matcap.empty() && options.shading != ShadingMode::Matcap)
        throw HostError("--matcap: requires --shading matcap, got \"" + wanted.shading + "\"");
    return options;
}

RenderCamera RenderFrames(const RenderArguments& wanted,
                          const RenderOptions& options,
                          const std::vector<std::string>& names,
                          ProgressLine& line,
                          const std::function<void(std::size_t, const RenderImage&)>& take) {
    CheckCameraArguments(wanted);
    const LoadedScene scene = OpenRefined(
        wanted.mesh,
        wanted.levels,
        {},
        [](const LevelForecast& forecast) {
            return RenderBytes(forecast.vertices, forecast.faces);
        },
        &line);
    const RenderedLevel level(*scene.geometry, options.shading);
    const auto count = static_cast<int>(names.size());
    const RenderCamera camera = CameraFor(
        wanted, count, level.Mesh(), IsScenePath(wanted.mesh) ? &scene.settings.view : nullptr);
    // Check the vertices first: if the mesh is out of range, the camera that frames it is out of
    // range, too.
    const RenderScene rendered({level.Mesh()}, &line);
    CheckRenderCamera(wanted, camera);
    line.Notes(wanted.mesh, scene.notes);
    for (std::size_t i = 0; i < names.size(); ++i) {
        ThrowIfInterrupted();
        if (!names[i].empty()) line.Step(i, names.size(), names[i]);
        const RenderImage picture =
            rendered.Render(TurntableFrame(camera, static_cast<int>(i), count), options, &line);
        ThrowIfInterrupted();
        take(i, picture);
    }
    line.Finish();
    return camera;
}

nlohmann::json CameraJson(const RenderCamera& camera) {
    const auto triple = [](const Vector& v) { return nlohmann::json{v.x, v.y, v.z}; };
    return {{"eye", triple(camera.eye)},
            {"target", triple(camera.target)},
            {"up", triple(camera.up)},
            {"fieldOfView", camera.verticalFieldOfView},
            {"orthographic", camera.isOrthographic}};
}

std::vector<CLI::Option*> AddCameraAndPictureArguments(CLI::App& command,
                                                       RenderArguments& arguments) {
    CLI::App* verb = &command;
    RenderArguments* options = &arguments;
    auto* from =
        verb->add_option("--from",
                         options->from,
                         "Direction from the mesh to the camera; the camera frames the whole mesh")
            ->expected(3);
    auto* eye =
        verb->add_option("--eye", options->eye, "Position of the eye")->expected(3)->excludes(from);
    auto* target = verb->add_option("--target", options->target, "Point that the camera looks at")
                       ->expected(3)
                       ->needs(eye);
    auto* up = verb->add_option("--up", options->up, "Up direction in the image")->expected(3);
    auto* fov = verb->add_option("--fov", options->fieldOfView, "Vertical field of view in degrees")
                    ->check(CLI::Range(0.1f, 179.0f));
    auto* orthographic = verb->add_flag(
        "--orthographic",
        options->isOrthographic,
        "Renders in orthographic projection; --fov and the distance from the eye to the "
        "target determine the height of the view");
    auto* width = verb->add_option("--width", options->options.width, "Width in pixels")
                      ->check(CLI::Range(1, 16384));
    auto* height = verb->add_option("--height", options->options.height, "Height in pixels")
                       ->check(CLI::Range(1, 16384));
    auto* samples = verb->add_option("--samples", options->options.samples, "Rays per pixel")
                        ->check(CLI::Range(1, 4096));
    auto* shading = verb->add_option("--shading", options->shading, "Shading mode")
                        ->check(CLI::IsMember(ShadingModeNames()));
    auto* matcap =
        verb->add_option(
                "--matcap", options->options.matcap, "Material for the shading mode matcap")
            ->check(CLI::IsMember(Matcap::Names()));
    auto* wireframe =
        verb->add_flag("--wireframe", options->options.wireframe, "Draws the edges of the faces");
    auto* transparent = verb->add_flag("--transparent",
                                       options->options.transparent,
                                       "Writes a transparent background instead of the backdrop");
    return {from,
            eye,
            target,
            up,
            fov,
            orthographic,
            width,
            height,
            samples,
            shading,
            matcap,
            wireframe,
            transparent};
}

void AddRenderArguments(CLI::App& command, RenderArguments& arguments) {
    command.add_option("--levels", arguments.levels, "Subdivision levels to add")
        ->check(CLI::Range(0u, 12u));
    AddCameraAndPictureArguments(command, arguments);
    command.add_flag("-q,--quiet", arguments.quiet, "Prints no progress and no summary");
    command.add_flag("--json", arguments.json, "Prints the summary as JSON on standard output");
}

}  // namespace trovik
