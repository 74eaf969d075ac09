// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/TraceRecorder.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/errors/HostError.h"
#include "framework/io/FilePath.h"
#include "framework/mesh/NotificationRecorder.h"
#include "framework/nodes/HostKernel.h"
#include "framework/trace/BrushSettingsText.h"
#include "framework/trace/MeshState.h"
#include "framework/trace/TraceFolder.h"

#include <cerrno>

namespace trovik {

namespace {

const char* NameOf(BrushCall::Kind kind) {
    static constexpr const char* names[] = {
        "SetActiveConfiguration", "BeginStroke", "ApplyDab", "ApplyToWholeMesh", "EndStroke"};
    return names[kind];
}

const MeshUnlocker* UnlockerOf(const BrushOperation& brush) {
    return dynamic_cast<const MeshUnlocker*>(&brush);
}

/// Returns the mesh that the brush is working on, which is the one whose lock it holds.
LevelMesh* BoundMesh(const BrushOperation& brush) {
    const MeshUnlocker* unlocker = UnlockerOf(brush);
    if (unlocker == nullptr) return nullptr;
    for (const LevelGeometry* geometry : SceneGeometries())
        for (uint32_t level = 0; level < geometry->LevelCount(); ++level)
            if (geometry->Level(level)->LockHolder() == unlocker) return geometry->Level(level);
    return nullptr;
}

std::vector<MeshRenderer*> RenderersOf(LevelMesh& mesh) {
    std::vector<MeshRenderer*> renderers;
    for (uint32_t i = 0;; ++i) {
        auto* renderer =
            dynamic_cast<MeshRenderer*>(mesh.ChildByClass(MeshRenderer::StaticClass(), i));
        if (renderer == nullptr) return renderers;
        renderers.push_back(renderer);
    }
}

std::string HitText(const SurfacePoint& hit) {
    JsonFields fields;
    fields.Set("mesh", MeshIdText(hit.mesh));
    fields.Set("face", std::to_string(hit.face));
    fields.Set("position", JsonVector(hit.position));
    fields.Set("normal", JsonVector(hit.normal));
    fields.Set("mirror", JsonBool(hit.mirror));
    return fields.Text();
}

std::string ToolText(const BrushConfiguration* tool) {
    return tool == nullptr ? JsonNull() : std::to_string(tool->ID());
}

}  // namespace

TraceRecorder::TraceRecorder(const TraceOptions& traceOptions) : options(traceOptions) {
    PrepareTraceFolder(options.folder);
    arrays = std::make_unique<TraceArrays>(options.folder + "/arrays");
    const std::string path = options.folder + "/" + traceLineFile;
    lines = std::fopen(path.c_str(), "wb");
    if (lines == nullptr) ThrowFileError("write", path, errno);
}

TraceRecorder::~TraceRecorder() { std::fclose(lines); }

void TraceRecorder::ThrowIfFailed() const {
    if (!failure.empty()) throw HostError(failure);
}

void TraceRecorder::BeforeCall(const BrushCall& call) {
    Guarded([&] { Prepare(call); });
}

void TraceRecorder::AfterCall(const BrushCall& call, const std::string* error) {
    Watch(false);
    Guarded([&] { Record(call, error); });
}

void TraceRecorder::Prepare(const BrushCall& call) {
    const bool onMesh = call.kind == BrushCall::BeginStroke || call.kind == BrushCall::ApplyDab ||
                        call.kind == BrushCall::ApplyToWholeMesh;
    if (begun) {
        WriteHostChanges(call.brush);
    } else if (onMesh) {
        for (const LevelGeometry* geometry : SceneGeometries())
            freezeQueries[geometry->Bound()] = geometry->Bound()->FreezeQuery();
        begun = true;
        WriteStates("before", call.brush);
    }
    FillInput(call);
    buildUpRateBefore = BuildUpRateText(call.brush);
    messagesBefore = HostKernel::Instance().HUDMessages().size();
    walked = false;
    lastWalk.clear();
    finished.clear();
    BrushOperation::Private& host = call.brush.Settings();
    directionWasSet = host.directionVectorSet;
    host.directionVectorSet = false;
    Watch(true);
}

void TraceRecorder::FillInput(const BrushCall& call) {
    const BrushOperation& brush = call.brush;
    input = JsonFields();
    switch (call.kind) {
        case BrushCall::SetActiveConfiguration:
            input.Set("tool", ToolText(call.configuration));
            // When a tool is selected, the settings of the active tool are stored before the brush
            // queries this value, even if both are the same tool.
            input.Set("inited",
                      JsonBool(brush.IsConfigurationInited(call.configuration) ||
                               brush.ActiveConfiguration() == call.configuration));
            return;
        case BrushCall::BeginStroke:
            input.Set("mesh", MeshIdText(call.mesh));
            arrays->ForgetPixels();
            input.Set("modifier", std::to_string(call.modifier));
            input.Set("trigger", std::to_string(call.trigger));
            input.Append(BrushSettingsFields(brush, *arrays));
            AddFreezeQuery(call.mesh, true);
            return;
        case BrushCall::ApplyDab: {
            input.Set("hit", HitText(*call.hit));
            input.Set("position", JsonVector(call.position));
            input.Set("size", JsonFloat(call.size));
            input.Set("pressure", JsonFloat(call.pressure));
            input.Set("strength", JsonFloat(call.strength));
            input.Set("box", JsonBox(*call.box));
            input.Set("previousPatchPosition", JsonVector(brush.PreviousPatchPosition()));
            input.Set("direction", std::to_string(brush.Direction()));
            if (brush.IsMaskEnabled(stampMask))
                input.Set("stampMatrix", JsonMatrix(brush.MaskMatrix(stampMask)));
            input.Set("stampFactor", JsonFloat(brush.MaskFactor(stampMask)));
            if (call.hit->mirror)
                input.Set("mirrorTransform", JsonMatrix(call.brush.MirrorConfig().PointMap()));
            input.Set("camera", CameraText());
            input.Append(BrushSettingsFields(brush, *arrays).ChangedSince(settings));
            AddFreezeQuery(call.hit->mesh, false);
            return;
        }
        case BrushCall::ApplyToWholeMesh:
            input.Set("mesh", MeshIdText(call.mesh));
            input.Set("strength", JsonFloat(call.strength));
            input.Set("byFacing", JsonBool(call.byFacing));
            input.Set("hit", HitText(SurfacePoint(call.mesh, call.mesh->faceVertexIndices[0], 0)));
            input.Append(BrushSettingsFields(brush, *arrays));
            // The dab applied by this call reads the values below, like any other dab.
            input.Set("previousPatchPosition", JsonVector(brush.PreviousPatchPosition()));
            if (brush.IsMaskEnabled(stampMask))
                input.Set("stampMatrix", JsonMatrix(brush.MaskMatrix(stampMask)));
            AddFreezeQuery(call.mesh, true);
            return;
        case BrushCall::EndStroke:
            return;
    }
}

void TraceRecorder::AddFreezeQuery(Mesh* mesh, bool always) {
    if (mesh == nullptr) return;
    const int answer = mesh->FreezeQuery();
    const auto [told, isNew] = freezeQueries.try_emplace(mesh, answer);
    if (!always && !isNew && told->second == answer) return;
    told->second = answer;
    input.Set("freezeQuery", std::to_string(answer));
}

void TraceRecorder::Record(const BrushCall& call, const std::string* error) {
    BrushOperation& brush = call.brush;
    BrushOperation::Private& host = brush.Settings();
    JsonFields out;
    switch (call.kind) {
        case BrushCall::SetActiveConfiguration:
            out.Set("strengthScale", JsonFloat(brush.brushStrengthScale));
            break;
        case BrushCall::BeginStroke: {
            settings = BrushSettingsFields(brush, *arrays);
            if (call.modifier == BrushOperation::ModifierSmooth) {
                // The brush read its build-up rate before it switched to Smooth, and all other
                // settings afterwards.
                JsonFields asRead = settings;
                for (const char* name : {"tool", "strengthScale"})
                    asRead.Set(name, *input.Find(name));
                asRead.Set("attributes", BrushAttributesText(brush, buildUpRateBefore));
                input.Append(asRead);
            }
            AddOutcome(out, call, error);
            break;
        }
        case BrushCall::ApplyDab:
            settings = BrushSettingsFields(brush, *arrays);
            out.Set("box", JsonBox(*call.box));
            AddOutcome(out, call, error);
            AddTouched(out, call);
            break;
        case BrushCall::ApplyToWholeMesh:
            settings = BrushSettingsFields(brush, *arrays);
            AddOutcome(out, call, error);
            AddTouched(out, call);
            break;
        case BrushCall::EndStroke:
            out.Set("finished", JsonList(finished));
            out.Set("tool", ToolText(brush.ActiveConfiguration()));
            break;
    }
    const bool hasErrorField = out.Find("error") != nullptr;
    if (!hasErrorField && error != nullptr) out.Set("error", JsonString(*error));
    host.directionVectorSet = host.directionVectorSet || directionWasSet;

    WriteCall(NameOf(call.kind), input, out);
    if (call.kind == BrushCall::ApplyDab && ++dabCount != 0 && options.every != 0 &&
        dabCount % options.every == 0)
        WriteStates(NumberedTraceFolder("dab", dabCount), brush);
    if (call.kind == BrushCall::BeginStroke) inStroke = error == nullptr;
    if (call.kind == BrushCall::EndStroke) inStroke = false;
    if (inStroke)
        hostChanges.Stop();
    else if (begun)
        hostChanges.Start(HashStates(brush));
    if (call.kind == BrushCall::EndStroke) WriteSettled();
}

void TraceRecorder::AddOutcome(JsonFields& out,
                               const BrushCall& call,
                               const std::string* error) const {
    out.Set("messages", MessagesSince());
    out.Set("error", error == nullptr ? JsonNull() : JsonString(*error));
    out.Set("bound", MeshIdText(BoundMesh(call.brush)));
}

void TraceRecorder::AddTouched(JsonFields& out, const BrushCall& call) const {
    const BrushOperation::Private& host = call.brush.Settings();
    LevelMesh* bound = BoundMesh(call.brush);
    out.Set("directionVector",
            host.directionVectorSet ? JsonVector(host.directionVector) : JsonNull());
    out.Set("visitStamp", bound == nullptr ? JsonNull() : std::to_string(bound->visitStamp));
    out.Set("recordCount", std::to_string(bound == nullptr ? 0u : bound->changeRecordCount));
    std::vector<std::string> tested;
    for (const FaceVisit& visit : lastWalk)
        tested.push_back("[" + std::to_string(visit.face) + (visit.answer ? ",1]" : ",0]"));
    out.Set("facesTested", JsonList(tested));
    std::vector<std::string> notices;
    if (walked && bound != nullptr) {
        for (const MeshRenderer* renderer : RenderersOf(*bound)) {
            std::vector<std::string> heard;
            if (const auto* listener = dynamic_cast<const NotificationRecorder*>(renderer))
                for (const NotificationRecorder::Notice& notice : listener->Notices())
                    heard.push_back("[" + std::to_string(notice.vertex) + "," +
                                    std::to_string(notice.face) + "]");
            notices.push_back(JsonList(heard));
        }
    }
    out.Set("notices", JsonList(notices));
}

std::string TraceRecorder::MessagesSince() const {
    const std::vector<std::string>& all = HostKernel::Instance().HUDMessages();
    std::vector<std::string> messages;
    for (std::size_t i = messagesBefore; i < all.size(); ++i)
        messages.push_back(JsonString(all[i]));
    return JsonList(messages);
}

void TraceRecorder::WalkEnded(const LevelMesh&, const std::vector<FaceVisit>& visits) {
    walked = true;
    lastWalk = visits;
}

void TraceRecorder::ChangeFinished(const LevelMesh& level, bool keepTopology, bool joinPrevious) {
    finished.push_back(
        JsonList({MeshIdText(&level), JsonBool(keepTopology), JsonBool(joinPrevious)}));
}

void TraceRecorder::Watch(bool on) {
    for (LevelGeometry* geometry : SceneGeometries()) {
        if (on)
            geometry->AddObserver(*this);
        else
            geometry->RemoveObserver(*this);
        for (MeshRenderer* renderer : RenderersOf(*geometry->Bound())) {
            auto* listener = dynamic_cast<NotificationRecorder*>(renderer);
            if (listener == nullptr) continue;
            if (on)
                listener->StartRecording();
            else
                listener->StopRecording();
        }
    }
}

void TraceRecorder::WriteCall(const char* name, const JsonFields& in, const JsonFields& out) {
    JsonFields line;
    line.Set("call", JsonString(std::string(name)));
    line.Set("in", in.Text());
    line.Set("out", out.Text());
    WriteLine(line);
}

void TraceRecorder::WriteLine(const JsonFields& line) {
    const std::string text = line.Text() + "\n";
    if (std::fwrite(text.data(), 1, text.size(), lines) != text.size() || std::fflush(lines) != 0)
        ThrowFileError("write", options.folder + "/" + traceLineFile, errno);
}

}  // namespace trovik
