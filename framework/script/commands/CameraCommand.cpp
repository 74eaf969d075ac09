// SPDX-License-Identifier: Apache-2.0
#include "framework/script/commands/CameraParameters.h"

namespace trovik {

StrokeView ViewOf(const CommandContext& context,
                  const CameraParameters& camera,
                  StrokeView view,
                  const std::string& pointer,
                  int frames) {
    view.width = camera.width.value_or(view.width);
    view.height = camera.height.value_or(view.height);
    view.verticalFieldOfView = camera.fieldOfView.value_or(view.verticalFieldOfView);
    view.isOrthographic = camera.orthographic.value_or(view.isOrthographic);
    if (camera.eye) {
        view.eye = *camera.eye;
        view.target = camera.target.value_or(view.target);
        view.up = camera.up.value_or(view.up);
        if ((view.up & (view.eye - view.target)).Length() == 0.0f)
            throw FieldFault(
                pointer, "\"eye\" equals \"target\", or the view direction is parallel to \"up\"");
        return view;
    }
    const Vector from = camera.from.value_or(Vector(0.35f, 0.2f, 1.0f));
    if (from.Length() == 0.0f)
        throw FieldFault(pointer + "/from", "the direction must not be zero");
    const Vector up = camera.up.value_or(Vector(0, 1, 0));
    if (up.Length() == 0.0f) throw FieldFault(pointer + "/up", "the direction must not be zero");
    const RenderCamera framed =
        FrameTurntable({context.document.ShownMesh()},
                       -from,
                       view.verticalFieldOfView,
                       static_cast<float>(view.width) / static_cast<float>(view.height),
                       up,
                       frames,
                       view.isOrthographic);
    view.eye = framed.eye;
    view.target = framed.target;
    view.up = framed.up;
    return view;
}

namespace {

void Camera(CommandContext& context, const CameraParameters& parameters) {
    Document& document = context.document;
    document.View() = ViewOf(context, parameters, document.View(), "");
    document.UpdateCamera();
}

const CommandRegistration<CameraParameters> camera(
    {.name = "camera", .duringStroke = DuringStroke::Allowed}, Camera, Camera);

}  // namespace

}  // namespace trovik
