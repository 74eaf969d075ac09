// SPDX-License-Identifier: Apache-2.0

/// \file Commands that render: "picture", and "sheet", which arranges kept renders on a contact
/// sheet.
#include "framework/render/RenderFile.h"
#include "framework/render/RenderedLevel.h"
#include "framework/script/commands/CameraParameters.h"
#include "framework/script/commands/InitialSurface.h"

#include <map>

namespace trovik {

namespace {

constexpr int gap = 12;

struct KeptPictures {
    std::map<std::string, RenderImage> byName;
};

struct PictureParameters {
    std::optional<std::string> file;
    std::optional<std::string> keep;
    std::optional<int> width;
    std::optional<int> height;
    std::optional<int> samples;
    std::optional<std::string> shading;
    std::optional<std::string> matcap;
    std::optional<bool> transparent;
    std::optional<int> frames;
    std::optional<bool> wireframe;
    std::optional<bool> beforeAfter;
    std::optional<CameraParameters> camera;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("keep", keep);
        visit("width", width);
        visit("height", height);
        visit("samples", samples);
        visit("shading", shading);
        visit("matcap", matcap);
        visit("transparent", transparent);
        visit("frames", frames);
        visit("wireframe", wireframe);
        visit("beforeAfter", beforeAfter);
        visit("camera", camera);
    }
};

RenderOptions OptionsOf(const PictureParameters& parameters, const StrokeView& view) {
    RenderOptions options;
    options.width = parameters.width.value_or(view.width);
    options.height = parameters.height.value_or(view.height);
    options.samples = parameters.samples.value_or(16);
    options.wireframe = parameters.wireframe.value_or(false);
    options.transparent = parameters.transparent.value_or(false);
    options.matcap = parameters.matcap.value_or("");
    options.shading = options.matcap.empty() ? ShadingMode::Clay : ShadingMode::Matcap;
    if (parameters.shading) {
        options.shading = ShadingModeOf(*parameters.shading);
        if (!options.matcap.empty() && options.shading != ShadingMode::Matcap)
            throw FieldFault("/matcap", "a matcap requires the shading mode \"matcap\"");
    }
    return options;
}

/// Renders one image, or the frames of a turntable, and passes each to `take` when it is complete.
void Render(CommandContext& context,
            const PictureParameters& parameters,
            const std::function<void(RenderImage, int index)>& take) {
    Document& document = context.document;
    const int frames = parameters.frames.value_or(1);
    StrokeView view = document.View();
    if (parameters.camera) view = ViewOf(context, *parameters.camera, view, "/camera", frames);
    const RenderOptions options = OptionsOf(parameters, view);
    const RenderCamera first{view.eye, view.target, view.up, view.verticalFieldOfView};
    const bool beforeAfter = parameters.beforeAfter.value_or(false);
    const LevelGeometry& geometry = document.Geometry();
    const InitialSurface& surface = context.Kept<InitialSurface>();
    if (beforeAfter && surface.positions.size() != geometry.Bound()->VertexCount()) {
        throw FieldFault("",
                         "there is no state before the first stroke on this level to compare with");
    }

    std::optional<RenderedLevel> after;
    std::optional<RenderedLevel> before;
    std::optional<RenderScene> sceneAfter;
    std::optional<RenderScene> sceneBefore;
    // Rendering errors are reported as errors of this command.
    AtField("", [&] {
        after.emplace(geometry, options.shading);
        sceneAfter.emplace(std::vector<RenderMesh>{after->Mesh()}, context.Job());
        if (!beforeAfter) return;
        before.emplace(geometry, options.shading, surface.positions, surface.normals);
        sceneBefore.emplace(std::vector<RenderMesh>{before->Mesh()}, context.Job());
    });
    for (int i = 0; i < frames; ++i) {
        context.ThrowIfCancelled();
        const RenderCamera camera = TurntableFrame(first, i, frames);
        RenderImage picture = AtField("", [&] {
            RenderImage rendered = sceneAfter->Render(camera, options, context.Job());
            if (!beforeAfter) return rendered;
            return MakeContactSheet({sceneBefore->Render(camera, options, context.Job()), rendered},
                                    2,
                                    gap,
                                    {"before", "after"});
        });
        take(std::move(picture), i);
    }
}

void CheckKinds(const PictureParameters& parameters) {
    if (!parameters.file && !parameters.keep) throw FieldFault("", "needs \"file\" or \"keep\"");
    if (parameters.frames && parameters.keep) {
        throw FieldFault("/keep",
                         "the frames of a turntable cannot be kept, only written to files");
    }
    if (!parameters.file) return;
    // A before-and-after comparison has an opaque background.
    const bool hasAlpha =
        parameters.transparent.value_or(false) && !parameters.beforeAfter.value_or(false);
    AtField("/file", [&] { CheckRenderPath(*parameters.file, hasAlpha); });
}

/// The paths of the image files to write; with "frames" one path per frame.
std::vector<std::string> Targets(const CommandContext& context,
                                 const PictureParameters& parameters) {
    if (!parameters.file) return {};
    if (!parameters.frames) return {context.OutputPath(*parameters.file, "/file")};
    std::vector<std::string> targets;
    for (int frame = 1; frame <= *parameters.frames; ++frame)
        targets.push_back(context.OutputPath(FramePath(*parameters.file, frame), "/file"));
    return targets;
}

void RenderOnce(CommandContext& context, const PictureParameters& parameters) {
    CheckKinds(parameters);
    const std::vector<std::string> targets = Targets(context, parameters);
    Render(context, parameters, [&](RenderImage picture, int index) {
        if (!targets.empty()) {
            const std::string& target = targets[static_cast<std::size_t>(index)];
            WriteRender(target, picture);
            context.NoteWritten(target);
        }
        if (parameters.keep)
            context.Kept<KeptPictures>().byName[*parameters.keep] = std::move(picture);
    });
}

void CheckPicture(CommandContext& context, const PictureParameters& parameters) {
    CheckKinds(parameters);
    if (parameters.keep) context.Kept<KeptPictures>().byName[*parameters.keep] = RenderImage();
    if (parameters.camera) ViewOf(context, *parameters.camera, context.document.View(), "/camera");
    for (const std::string& target : Targets(context, parameters)) context.NoteWritten(target);
}

void PreparePicture(CommandContext& context, const PictureParameters& parameters) {
    if (parameters.beforeAfter.value_or(false)) context.Kept<InitialSurface>().isWanted = true;
}

struct SheetParameters {
    std::string file;
    std::vector<std::string> pictures;
    std::optional<int> columns;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("pictures", pictures);
        visit("columns", columns);
    }
};

/// The renders that were kept under these names.
std::vector<const RenderImage*> KeptPicturesNamed(CommandContext& context,
                                                  const std::vector<std::string>& names) {
    const auto& kept = context.Kept<KeptPictures>().byName;
    std::vector<const RenderImage*> pictures;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string pointer = "/pictures/" + std::to_string(i);
        const auto found = kept.find(names[i]);
        if (found == kept.end()) throw FieldFault(pointer, "no picture was kept under this name");
        const RenderImage& picture = found->second;
        if (!pictures.empty() && (pictures.front()->width != picture.width ||
                                  pictures.front()->height != picture.height))
            throw FieldFault(pointer, "all pictures of a sheet must have the same size");
        pictures.push_back(&picture);
    }
    return pictures;
}

void Sheet(CommandContext& context, const SheetParameters& parameters) {
    std::vector<RenderImage> pictures;
    for (const RenderImage* picture : KeptPicturesNamed(context, parameters.pictures))
        pictures.push_back(*picture);
    const std::string file = context.OutputPath(parameters.file, "/file");
    WriteRender(
        file, MakeContactSheet(pictures, parameters.columns.value_or(5), gap, parameters.pictures));
    context.NoteWritten(file);
}

void CheckSheet(CommandContext& context, const SheetParameters& parameters) {
    KeptPicturesNamed(context, parameters.pictures);
    context.NoteWritten(context.OutputPath(parameters.file, "/file"));
}

const CommandRegistration<PictureParameters> picture({.name = "picture",
                                                      .duringStroke = DuringStroke::Allowed,
                                                      .isJournaled = false,
                                                      .writesFiles = true},
                                                     RenderOnce,
                                                     CheckPicture,
                                                     PreparePicture);
const CommandRegistration<SheetParameters> sheet({.name = "sheet",
                                                  .duringStroke = DuringStroke::Allowed,
                                                  .isJournaled = false,
                                                  .writesFiles = true},
                                                 Sheet,
                                                 CheckSheet);

}  // namespace

}  // namespace trovik
