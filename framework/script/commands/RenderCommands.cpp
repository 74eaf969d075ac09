// SPDX-License-Identifier: Apache-2.0

/// \file Commands that render: "render", and "contactSheet", which arranges kept renders on a
/// contact sheet.
#include "framework/render/RenderFile.h"
#include "framework/render/RenderedLevel.h"
#include "framework/script/commands/CameraParameters.h"
#include "framework/script/commands/InitialSurface.h"

#include <map>

namespace trovik {

namespace {

constexpr int gap = 12;

struct KeptRenders {
    std::map<std::string, RenderImage> byName;
};

struct RenderParameters {
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

RenderOptions OptionsOf(const RenderParameters& parameters, const StrokeView& view) {
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
            const RenderParameters& parameters,
            const std::function<void(RenderImage, int index)>& take) {
    Document& document = context.document;
    const int frames = parameters.frames.value_or(1);
    StrokeView view = document.View();
    if (parameters.camera) view = ViewOf(context, *parameters.camera, view, "/camera", frames);
    const RenderOptions options = OptionsOf(parameters, view);
    const RenderCamera first{
        view.eye, view.target, view.up, view.verticalFieldOfView, view.isOrthographic};
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

void CheckKinds(const RenderParameters& parameters) {
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

/// The paths of the image files to write; if "frames" is given, one path per frame.
std::vector<std::string> Targets(const CommandContext& context,
                                 const RenderParameters& parameters) {
    if (!parameters.file) return {};
    if (!parameters.frames) return {context.OutputPath(*parameters.file, "/file")};
    std::vector<std::string> targets;
    for (int frame = 1; frame <= *parameters.frames; ++frame)
        targets.push_back(context.OutputPath(FramePath(*parameters.file, frame), "/file"));
    return targets;
}

void RenderOnce(CommandContext& context, const RenderParameters& parameters) {
    CheckKinds(parameters);
    const std::vector<std::string> targets = Targets(context, parameters);
    Render(context, parameters, [&](RenderImage picture, int index) {
        if (!targets.empty()) {
            const std::string& target = targets[static_cast<std::size_t>(index)];
            WriteRender(target, picture);
            context.NoteWritten(target);
        }
        if (parameters.keep)
            context.Kept<KeptRenders>().byName[*parameters.keep] = std::move(picture);
    });
}

void CheckRender(CommandContext& context, const RenderParameters& parameters) {
    CheckKinds(parameters);
    if (parameters.keep) context.Kept<KeptRenders>().byName[*parameters.keep] = RenderImage();
    if (parameters.camera) ViewOf(context, *parameters.camera, context.document.View(), "/camera");
    for (const std::string& target : Targets(context, parameters)) context.NoteWritten(target);
}

void PrepareRender(CommandContext& context, const RenderParameters& parameters) {
    if (parameters.beforeAfter.value_or(false)) context.Kept<InitialSurface>().isWanted = true;
}

struct ContactSheetParameters {
    std::string file;
    std::vector<std::string> renders;
    std::optional<int> columns;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("file", file);
        visit("renders", renders);
        visit("columns", columns);
    }
};

/// The renders that were kept under these names.
std::vector<const RenderImage*> KeptRendersNamed(CommandContext& context,
                                                 const std::vector<std::string>& names) {
    const auto& kept = context.Kept<KeptRenders>().byName;
    std::vector<const RenderImage*> renders;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string pointer = "/renders/" + std::to_string(i);
        const auto found = kept.find(names[i]);
        if (found == kept.end()) throw FieldFault(pointer, "no render was kept under this name");
        const RenderImage& render = found->second;
        if (!renders.empty() &&
            (renders.front()->width != render.width || renders.front()->height != render.height))
            throw FieldFault(pointer, "all renders of a contact sheet must have the same size");
        renders.push_back(&render);
    }
    return renders;
}

void ContactSheet(CommandContext& context, const ContactSheetParameters& parameters) {
    std::vector<RenderImage> renders;
    for (const RenderImage* render : KeptRendersNamed(context, parameters.renders))
        renders.push_back(*render);
    const std::string file = context.OutputPath(parameters.file, "/file");
    WriteRender(file,
                MakeContactSheet(renders, parameters.columns.value_or(5), gap, parameters.renders));
    context.NoteWritten(file);
}

void CheckContactSheet(CommandContext& context, const ContactSheetParameters& parameters) {
    KeptRendersNamed(context, parameters.renders);
    context.NoteWritten(context.OutputPath(parameters.file, "/file"));
}

const CommandRegistration<RenderParameters> render({.name = "render",
                                                    .duringStroke = DuringStroke::Allowed,
                                                    .isJournaled = false,
                                                    .writesFiles = true},
                                                   RenderOnce,
                                                   CheckRender,
                                                   PrepareRender);
const CommandRegistration<ContactSheetParameters> contactSheet(
    {.name = "contactSheet",
     .duringStroke = DuringStroke::Allowed,
     .isJournaled = false,
     .writesFiles = true},
    ContactSheet,
    CheckContactSheet);

}  // namespace

}  // namespace trovik
