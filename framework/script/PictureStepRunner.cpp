// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/script/ScriptRunner.h"

namespace trovik {

namespace {

constexpr int gap = 12;

void WritePicture(const std::string& file, const Picture& picture) {
    WriteImageFile(file,
                   picture.rgb.data(),
                   static_cast<uint32_t>(picture.width),
                   static_cast<uint32_t>(picture.height),
                   3);
}

}  // namespace

// Without a place for the eye the camera stands where the whole mesh is seen, looking from "from".
StrokeView ScriptRunner::ReadView(const FieldReader& camera, StrokeView view) {
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
    const PictureCamera framed =
        FrameMeshes({session->ShownMesh()},
                    -from,
                    view.verticalFieldOfView,
                    static_cast<float>(view.width) / static_cast<float>(view.height));
    view.eye = framed.eye;
    view.target = framed.target;
    view.up = framed.up;
    return view;
}

void ScriptRunner::RunCamera(const FieldReader& camera) {
    session->View() = ReadView(camera, session->View());
    session->UpdateCamera();
}

void ScriptRunner::KeepBefore() {
    if (!wantsBefore || !positionsBefore.empty()) return;
    const LevelMesh& mesh = *session->Geometry().Bound();
    for (uint32_t v = 0; v < mesh.VertexCount(); ++v) positionsBefore.push_back(mesh.Position(v));
    normalsBefore.assign(mesh.vertexNormals.array, mesh.vertexNormals.array + mesh.VertexCount());
}

Picture ScriptRunner::MakePicture(const FieldReader& fields) {
    StrokeView view = session->View();
    if (fields.Has("camera")) view = ReadView(fields.At("camera"), view);
    PictureOptions options;
    options.width = fields.IntegerOr("width", view.width);
    options.height = fields.IntegerOr("height", view.height);
    options.samples = fields.IntegerOr("samples", 16);
    options.wireframe = fields.FlagOr("wireframe", false);
    const PictureCamera camera{view.eye, view.target, view.up, view.verticalFieldOfView};
    const PictureMesh shown = session->ShownMesh();
    const auto render = [&](const PictureMesh& mesh) {
        try {
            return RenderPicture({mesh}, camera, options);
        } catch (const HostError& error) {
            fields.Fail(error.what());
        }
    };
    const Picture after = render(shown);
    if (!fields.FlagOr("beforeAfter", false)) return after;
    if (positionsBefore.size() != shown.vertexCount)
        fields.Fail("there is no state before the first stroke on this level to compare with");
    PictureMesh earlier = shown;
    earlier.positions = &positionsBefore[0].x;
    earlier.positionStride = sizeof(Vector);
    earlier.normals = &normalsBefore[0].x;
    earlier.freeze = nullptr;
    const Picture before = render(earlier);
    return PlaceInRows({before, after}, 2, gap, {"before", "after"});
}

void ScriptRunner::RunPicture(const FieldReader& fields) {
    if (!fields.Has("file") && !fields.Has("keep"))
        fields.Fail("a picture needs a \"file\", or a name under which to \"keep\" it");
    Picture picture = MakePicture(fields);
    if (fields.Has("file")) {
        const std::string file = OutputPath(fields.At("file"));
        WritePicture(file, picture);
        result.files.push_back(file);
    }
    if (fields.Has("keep")) kept[fields.At("keep").Text()] = std::move(picture);
}

void ScriptRunner::RunSheet(const FieldReader& fields) {
    std::vector<Picture> pictures;
    std::vector<std::string> captions;
    const FieldReader names = fields.At("pictures");
    for (std::size_t i = 0; i < names.Size(); ++i) {
        const auto found = kept.find(names.At(i).Text());
        if (found == kept.end()) names.At(i).Fail("no picture was kept under this name");
        if (!pictures.empty() && (pictures[0].width != found->second.width ||
                                  pictures[0].height != found->second.height))
            names.At(i).Fail("the pictures of a sheet must have one size");
        pictures.push_back(found->second);
        captions.push_back(found->first);
    }
    const std::string file = OutputPath(fields.At("file"));
    WritePicture(file, PlaceInRows(pictures, fields.IntegerOr("columns", 5), gap, captions));
    result.files.push_back(file);
}

}  // namespace trovik
