// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/BrushSettingsText.h"

#include "framework/multires/LevelGeometry.h"
#include "framework/nodes/HostKernel.h"
#include "framework/nodes/PreferenceFile.h"

namespace trovik {

namespace {

constexpr int mirroredStampMask = 1;

constexpr const char* attributeNames[] = {"builduprate",
                                          "bilinearsample",
                                          "globalplane",
                                          "updateplane",
                                          "affectalllayers",
                                          "drawfromcenter"};
constexpr const char* preferenceKeys[] = {"Render Swift Stroke",
                                          "Swift Stroke Level Factor",
                                          "Use Original Data For Flatten",
                                          "Use Vertex Weights For Flatten",
                                          "Wax Fills Only",
                                          "Wax Scrapes Only"};

/// Returns the value of a Boolean or numeric attribute; null if the attribute does not exist.
std::string AttributeText(const Attribute* attribute) {
    if (const auto* flag = dynamic_cast<const AttributeInstance<bool>*>(attribute))
        return JsonBool(flag->Value());
    if (const auto* number = dynamic_cast<const AttributeInstance<float>*>(attribute))
        return JsonFloat(number->Value());
    return JsonNull();
}

/// The brush recognises a vector stamp by its file name; any other stamp is read as one value per
/// pixel.
bool IsVectorStamp(const QString& name) {
    return name.contains(QLatin1String(".vdm"), Qt::CaseInsensitive) ||
           name.contains(QLatin1String("_vdm"), Qt::CaseInsensitive);
}

std::string StampText(const BrushOperation& brush, TraceArrays& arrays) {
    Image& image = *brush.MaskImage(stampMask);
    const QString name = brush.MaskName(stampMask);
    const bool hasPixels = image.Width() != 0 && image.Height() != 0;
    JsonFields stamp;
    stamp.Set("enabled", JsonBool(brush.IsMaskEnabled(stampMask)));
    stamp.Set("tiled", JsonBool(brush.IsMaskTiled(stampMask)));
    stamp.Set("inverted", JsonBool(brush.IsMaskInverted(stampMask)));
    stamp.Set("factor", JsonFloat(brush.MaskFactor(stampMask)));
    stamp.Set("offset", JsonFloat(brush.MaskOffset(stampMask)));
    stamp.Set("buildUp", JsonBool(brush.MaskBuildUp(stampMask)));
    stamp.Set("name", JsonString(name));
    stamp.Set("imageKind", std::to_string(image.ImageKind()));
    stamp.Set("width", std::to_string(image.Width()));
    stamp.Set("height", std::to_string(image.Height()));
    stamp.Set("version", std::to_string(image.Version()));
    stamp.Set("image", std::to_string(arrays.ImageNumber(&image)));
    stamp.Set("pixels",
              hasPixels ? JsonString(arrays.Pixels(image, name, IsVectorStamp(name) ? 3 : 1))
                        : JsonNull());
    return stamp.Text();
}

std::string FacingText(const BrushOperation& brush) {
    JsonFields facing;
    facing.Set("active", JsonBool(CheckableFloatArray::s_bActive));
    facing.Set("start", JsonFloat(brush.facingAngleStart));
    facing.Set("range", JsonFloat(brush.facingAngleRange));
    return facing.Text();
}

std::string PreferencesText() {
    JsonFields preferences;
    for (const char* key : preferenceKeys) preferences.Set(key, AttributeText(FindPreference(key)));
    return preferences.Text();
}

std::string RenderersText() {
    const HostScene& scene = *HostKernel::Instance().Scene();
    JsonFields renderers;
    for (unsigned i = 0; i < scene.GeometryCount(); ++i) {
        const auto* geometry = dynamic_cast<const LevelGeometry*>(scene.GeometryAt(i));
        if (geometry == nullptr) continue;
        std::vector<std::string> factors;
        for (uint32_t k = 0;; ++k) {
            const auto* renderer = dynamic_cast<const MeshRenderer*>(
                geometry->Bound()->ChildByClass(MeshRenderer::StaticClass(), k));
            if (renderer == nullptr) break;
            factors.push_back(JsonFloat(renderer->rendererUpdateFactor()));
        }
        renderers.Set("m" + std::to_string(i), JsonList(factors));
    }
    return renderers.Text();
}

}  // namespace

std::string BuildUpRateText(const BrushOperation& brush) {
    return AttributeText(brush.AttributeByName(QLatin1String(attributeNames[0])));
}

std::string BrushAttributesText(const BrushOperation& brush, const std::string& buildUpRate) {
    JsonFields attributes;
    for (const char* name : attributeNames)
        attributes.Set(name, AttributeText(brush.AttributeByName(QLatin1String(name))));
    if (!buildUpRate.empty()) attributes.Set(attributeNames[0], buildUpRate);
    return attributes.Text();
}

JsonFields BrushSettingsFields(const BrushOperation& brush, TraceArrays& arrays) {
    const BrushConfiguration* tool = brush.ActiveConfiguration();
    const MirrorConfiguration& mirror = const_cast<BrushOperation&>(brush).MirrorConfig();
    JsonFields fields;
    fields.Set("tool", tool == nullptr ? JsonNull() : std::to_string(tool->ID()));
    fields.Set("attributes", BrushAttributesText(brush));
    fields.Set("direction", std::to_string(brush.Direction()));
    fields.Set("strengthScale", JsonFloat(brush.brushStrengthScale));
    fields.Set("strengthBias", JsonFloat(brush.BrushStrengthBias()));
    // Strokes that refine the mesh are not traced; see StrokeLoop::Begin.
    fields.Set("useTessellator", JsonBool(false));
    fields.Set("strokeMeshLocked", JsonBool(brush.strokeMeshLocked != 0));
    fields.Set("testMode", JsonBool(HostKernel::Instance().IsTestModeOn()));
    fields.Set("mirrorMode", std::to_string(mirror.MirrorMode()));
    fields.Set("mirrorMaskEnabled", JsonBool(brush.IsMaskEnabled(mirroredStampMask)));
    fields.Set("facing", FacingText(brush));
    fields.Set("falloff", JsonString(arrays.Falloff(brush.FalloffData())));
    fields.Set("stamp", StampText(brush, arrays));
    fields.Set("preferences", PreferencesText());
    fields.Set("camera", CameraText());
    fields.Set("renderers", RenderersText());
    return fields;
}

std::string MeshIdText(const Mesh* mesh) {
    const HostScene& scene = *HostKernel::Instance().Scene();
    for (unsigned i = 0; mesh != nullptr && i < scene.GeometryCount(); ++i)
        if (const_cast<Mesh*>(mesh)->Geometry() == scene.GeometryAt(i))
            return JsonString("m" + std::to_string(i));
    return JsonNull();
}

std::string CameraText() {
    const Vector origin;
    Vector eye;
    HostKernel::Instance().Scene()->ActiveCamera()->Transformation()->LocalToWorld(
        &eye, &origin, 1.0f);
    return JsonVector(eye);
}

}  // namespace trovik
