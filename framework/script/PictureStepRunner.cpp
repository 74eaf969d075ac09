// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/render/PictureFile.h"
#include "framework/render/RenderedLevel.h"
#include "framework/script/ScriptRunner.h"

#include <optional>

namespace trovik {

namespace {

constexpr int gap = 12;

}  // namespace

// Without a place for the eye the camera stands where the whole mesh is seen, looking from "from".
StrokeView ScriptRunner::ReadView(const FieldReader& camera, StrokeView view, int frames) {
    view.width = camera.IntegerOr("width", view.width);
    view.height = camera.IntegerOr("height", view.height);
    view.verticalFieldOfView = camera.NumberOr("fieldOfView", view.verticalFieldOfView);
    if (camera.Has("eye")) {
        view.eye = camera.At("eye").ThreeNumbers();
        if (camera.Has("target")) view.target = camera.At("target").ThreeNumbers();
        if (camera.Has("up")) view.up = camera.At("up").ThreeNumbers();
        if ((view.up & (view.eye - view.target)).Length() == 0.0f)
            camera.Fail("the camera looks along its own up direction, or at itself");
        return view;
    }
    const Vector from =
        camera.Has("from") ? camera.At("from").ThreeNumbers() : Vector(0.35f, 0.2f, 1.0f);
    if (from.Length() == 0.0f) camera.At("from").Fail("the direction has no length");
    const Vector up = camera.Has("up") ? camera.At("up").ThreeNumbers() : Vector(0, 1, 0);
    if (up.Length() == 0.0f) camera.At("up").Fail("the direction has no length");
    const PictureCamera framed =
        FrameTurntable({document->ShownMesh()},
                       -from,
                       view.verticalFieldOfView,
                       static_cast<float>(view.width) / static_cast<float>(view.height),
                       up,
                       frames);
    view.eye = framed.eye;
    view.target = framed.target;
    view.up = framed.up;
    return view;
}

void ScriptRunner::RunCamera(const FieldReader& camera) {
    document->View() = ReadView(camera, document->View());
    document->UpdateCamera();
}

void ScriptRunner::KeepBefore() {
    if (!wantsBefore || !positionsBefore.empty()) return;
    const LevelMesh& mesh = *document->Geometry().Bound();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) positionsBefore.push_back(mesh.Position(v));
    normalsBefore.assign(mesh.vertexNormals.array, mesh.vertexNormals.array + mesh.VertexCount());
}

PictureOptions ScriptRunner::ReadPictureOptions(const FieldReader& fields,
                                                const StrokeView& view) const {
    PictureOptions options;
    options.width = fields.IntegerOr("width", view.width);
    options.height = fields.IntegerOr("height", view.height);
    options.samples = fields.IntegerOr("samples", 16);
    options.wireframe = fields.FlagOr("wireframe", false);
    options.transparent = fields.FlagOr("transparent", false);
    options.poll = [this] { StopIfAsked(); };
    options.matcap = fields.TextOr("matcap", "");
    options.shading = options.matcap.empty() ? ShadingMode::Clay : ShadingMode::Matcap;
    if (fields.Has("shading")) {
        options.shading = ShadingModeOf(fields.At("shading").Text());
        if (!options.matcap.empty() && options.shading != ShadingMode::Matcap)
            fields.At("matcap").Fail("a matcap goes with the shading mode \"matcap\" only");
    }
    return options;
}

void ScriptRunner::MakePictures(const FieldReader& fields,
                                int frames,
                                const std::function<void(Picture, int index)>& take) {
    StrokeView view = document->View();
    if (fields.Has("camera")) view = ReadView(fields.At("camera"), view, frames);
    const PictureOptions options = ReadPictureOptions(fields, view);
    const PictureCamera first{view.eye, view.target, view.up, view.verticalFieldOfView};
    const bool beforeAfter = fields.FlagOr("beforeAfter", false);
    const LevelGeometry& geometry = document->Geometry();
    if (beforeAfter && positionsBefore.size() != geometry.Bound()->VertexCount())
        fields.Fail("there is no state before the first stroke on this level to compare with");

    // What cannot be rendered is an error of this step.
    const auto orFail = [&fields](const auto& work) {
        try {
            return work();
        } catch (const HostError& error) {
            fields.Fail(error.what());
        }
    };
    std::optional<RenderedLevel> after;
    std::optional<RenderedLevel> before;
    std::optional<RenderScene> sceneAfter;
    std::optional<RenderScene> sceneBefore;
    orFail([&] {
        after.emplace(geometry, options.shading);
        sceneAfter.emplace(std::vector<PictureMesh>{after->Mesh()});
        if (!beforeAfter) return;
        before.emplace(geometry, options.shading, positionsBefore, normalsBefore);
        sceneBefore.emplace(std::vector<PictureMesh>{before->Mesh()});
    });
    for (int i = 0; i < frames; ++i) {
        StopIfAsked();
        const PictureCamera camera = TurntableFrame(first, i, frames);
        Picture picture = orFail([&] {
            Picture rendered = sceneAfter->Render(camera, options);
            if (!beforeAfter) return rendered;
            return PlaceInRows(
                {sceneBefore->Render(camera, options), rendered}, 2, gap, {"before", "after"});
        });
        take(std::move(picture), i);
    }
}

void ScriptRunner::CheckPictureKinds(const FieldReader& fields) const {
    if (!fields.Has("file") && !fields.Has("keep"))
        fields.Fail("a picture needs a \"file\", or a name under which to \"keep\" it");
    if (fields.Has("frames") && fields.Has("keep"))
        fields.At("keep").Fail("the frames of a turntable are written to files, not kept");
    if (!fields.Has("file")) return;
    // A comparison is laid over an opaque ground.
    const bool hasAlpha =
        fields.FlagOr("transparent", false) && !fields.FlagOr("beforeAfter", false);
    try {
        CheckPicturePath(fields.At("file").Text(), hasAlpha);
    } catch (const HostError& error) {
        fields.At("file").Fail(error.what());
    }
}

std::vector<std::string> ScriptRunner::PictureTargets(const FieldReader& fields) {
    if (!fields.Has("file")) return {};
    const FieldReader file = fields.At("file");
    if (!fields.Has("frames")) return {OutputPath(file)};
    std::vector<std::string> targets;
    for (int frame = 1; frame <= fields.At("frames").Integer(); ++frame) {
        const nlohmann::json name = FramePath(file.Text(), frame);
        targets.push_back(OutputPath(file.With(name)));
    }
    return targets;
}

void ScriptRunner::RunPicture(const FieldReader& fields) {
    CheckPictureKinds(fields);
    const std::vector<std::string> targets = PictureTargets(fields);
    MakePictures(fields, fields.IntegerOr("frames", 1), [&](Picture picture, int index) {
        if (!targets.empty()) {
            const std::string& target = targets[static_cast<std::size_t>(index)];
            WritePicture(target, picture);
            NoteWritten(target);
        }
        if (fields.Has("keep")) kept[fields.At("keep").Text()] = std::move(picture);
    });
}

std::vector<const Picture*> ScriptRunner::KeptPictures(const FieldReader& names) const {
    std::vector<const Picture*> pictures;
    for (std::size_t i = 0; i < names.Size(); ++i) {
        const auto found = kept.find(names.At(i).Text());
        if (found == kept.end()) names.At(i).Fail("no picture was kept under this name");
        const Picture& picture = found->second;
        if (!pictures.empty() && (pictures.front()->width != picture.width ||
                                  pictures.front()->height != picture.height))
            names.At(i).Fail("the pictures of a sheet must have one size");
        pictures.push_back(&picture);
    }
    return pictures;
}

void ScriptRunner::RunSheet(const FieldReader& fields) {
    std::vector<Picture> pictures;
    std::vector<std::string> captions;
    const FieldReader names = fields.At("pictures");
    for (const Picture* picture : KeptPictures(names)) pictures.push_back(*picture);
    for (std::size_t i = 0; i < names.Size(); ++i) captions.push_back(names.At(i).Text());
    const std::string file = OutputPath(fields.At("file"));
    WritePicture(file, PlaceInRows(pictures, fields.IntegerOr("columns", 5), gap, captions));
    NoteWritten(file);
}

}  // namespace trovik
