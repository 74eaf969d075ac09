// SPDX-License-Identifier: Apache-2.0
#include "brush/PlaneClamp.h"
#include "brush/SwiftStroke.h"
#include "brush/ToolCatalogue.h"
#include "host/FalloffIndex.h"

namespace trovik {

namespace {

bool IsImprint(const BrushConfiguration* tool) {
    return tool != nullptr && tool->ID() == static_cast<uint32_t>(Tool::Imprint);
}

}  // namespace

// The only function that derives state from the active tool. The rest of the brush tests the flags
// that are set here.
void SwiftStroke::SetActiveConfiguration(BrushConfiguration* configuration) {
    const TVCrashReporterFlag flag(4, 4);
    BrushOperation::SetActiveConfiguration(configuration);
    g_pKernel->Interface()->ActivateLayerSystem(LayerUISculpt);

    ResetToolState();
    ShowCommonAttributes();
    const auto tool = static_cast<Tool>(configuration->ID());
    if (!IsConfigurationInited(configuration)) ApplySharedDefaults();
    SetToolFlags(tool);
    ShowToolAttributes(tool);
    if (!IsConfigurationInited(configuration)) ApplyToolDefaults(tool);
    globalPlane.SetVisible(isPlaneTool);
    updatePlane.SetVisible(isPlaneTool);
}

void SwiftStroke::ResetToolState() {
    isSmooth = false;
    isPinch = false;
    isSmear = false;
    isBulge = false;
    isWax = false;
    isPlaneTool = false;
    usePatchNormal = true;
    planeClampMin = -unlimited;
    planeClampMax = unlimited;
    planeOffsetFactor = 0.0f;
    planeDirectionSign = 1.0f;
    SetBrushStrengthScale(1.0f);
    if (!inTemporarySmooth) configurationBeforeSmooth = nullptr;
}

void SwiftStroke::ShowCommonAttributes() {
    buildUpRate.SetVisible(true);
    strokeOptionC.SetVisible(true);
    strokeSmoothingAttribute.SetVisible(true);
    steadyStrokeAttribute.SetVisible(true);
    drawFromCenter.SetVisible(false);
    affectAllLayers.SetVisible(false);
    directionAttribute.SetVisible(true);
    separatorOption.SetSeparator(true);
    strokeOptionD.SetVisible(true);
    strokeFloatA.SetVisible(true);
    strokeFloatB.SetVisible(true);
}

void SwiftStroke::ApplySharedDefaults() {
    SetBrushStrength(15.0f);
    resetOptionA.SetValue(0, true);
    separatorOption.SetValue(0, true);
    strokeFloatA.SetValue(25.0f, true);
    strokeFloatB.SetValue(0.0f, true);
    SetStrokeSmoothing(true, 0.0625f);
    SetSteadyStroke(false, 0.04f);
    updatePlane.SetValue(true, true);
    globalPlane.SetValue(false, true);
    affectAllLayers.SetValue(true, true);
    // The cube of the rate, which the kernels read, is updated at the start of the next stroke.
    buildUpRate.SetValue(0.5f, true);
    SetStamp(false, QString::fromLatin1(""));
    StampConfiguration none;
    SetStampConfig(none);
    SetFalloffIndex(smoothFalloffIndex);
    directionAttribute.SetValue(1, true);
}

void SwiftStroke::SetToolFlags(Tool tool) {
    switch (tool) {
        case Tool::Smear:
            isSmear = true;
            break;
        case Tool::Pinch:
            isPinch = true;
            SetBrushStrengthScale(0.01f);
            break;
        case Tool::Smooth:
            isSmooth = true;
            break;
        case Tool::Amplify:
            // Unlike the other plane tools, Amplify keeps the patch normal. The negative sign makes
            // vertices move away from the plane.
            isPlaneTool = true;
            planeDirectionSign = -1.0f;
            SetBrushStrengthScale(0.2f);
            break;
        case Tool::Flatten:
            isPlaneTool = true;
            usePatchNormal = false;
            break;
        case Tool::Scrape:
            isPlaneTool = true;
            usePatchNormal = false;
            planeClampMax = 0.0f;
            break;
        case Tool::Fill:
            isPlaneTool = true;
            usePatchNormal = false;
            planeClampMin = 0.0f;
            break;
        case Tool::Wax:
            isPlaneTool = true;
            isWax = true;
            usePatchNormal = false;
            planeOffsetFactor = 0.1f;
            SetBrushStrengthScale(0.5f);
            break;
        case Tool::Bulge:
            isBulge = true;
            break;
        default:
            break;
    }
}

void SwiftStroke::ShowToolAttributes(Tool tool) {
    switch (tool) {
        case Tool::Smear:
        case Tool::Pinch:
        case Tool::Bulge:
            directionAttribute.SetVisible(false);
            break;
        case Tool::Smooth:
            directionAttribute.SetVisible(false);
            separatorOption.SetSeparator(false);
            affectAllLayers.SetVisible(true);
            break;
        case Tool::Amplify:
        case Tool::Flatten:
        case Tool::Scrape:
        case Tool::Fill:
        case Tool::Wax:
            separatorOption.SetSeparator(false);
            break;
        case Tool::Imprint:
            strokeOptionD.SetVisible(false);
            strokeFloatA.SetVisible(false);
            strokeFloatB.SetVisible(false);
            buildUpRate.SetVisible(false);
            strokeOptionC.SetVisible(false);
            strokeSmoothingAttribute.SetVisible(false);
            steadyStrokeAttribute.SetVisible(false);
            drawFromCenter.SetVisible(true);
            break;
        default:
            break;
    }
}

void SwiftStroke::ApplyToolDefaults(Tool tool) {
    switch (tool) {
        case Tool::Smooth:
            SetBrushStrength(100.0f);
            break;
        case Tool::Wax:
            SetStrokeSmoothing(true, 0.1f);
            break;
        case Tool::Spray: {
            SetStrokeSmoothing(true, 0.0625f);
            setBuildUpRate(0.5f);
            StampConfiguration scattered;
            scattered.path = QString::fromLatin1("Stamps/bw_brickTile.tif");
            scattered.enabled = true;
            scattered.randomize = true;
            SetStampConfig(scattered);
            break;
        }
        case Tool::Repeat:
            SetStrokeSmoothing(true, 0.0625f);
            setBuildUpRate(0.5f);
            SetStamp(true, QString::fromLatin1("Stamps/bw_scale.tif"));
            break;
        case Tool::Knife:
            SetStrokeSmoothing(true, 0.2625f);
            setBuildUpRate(0.5f);
            SetStamp(true, QString::fromLatin1("Stamps/knife.tif"));
            break;
        case Tool::Foamy:
            SetStrokeSmoothing(false, 0.1125f);
            setBuildUpRate(0.25f);
            break;
        case Tool::Imprint:
            SetStrokeSmoothing(false, 0.1125f);
            setBuildUpRate(1.0f);
            SetStamp(true, QString::fromLatin1("Stamps/rubble.tif"));
            SetFalloffIndex(plateauFalloffIndex);
            strokeFloatA.SetValue(100.0f, true);
            strokeFloatB.SetValue(100.0f, true);
            drawFromCenter.SetValue(true, true);
            imprintPairAttribute.SetValue({false, 0.6f}, false);
            break;
        default:
            break;
    }
}

void SwiftStroke::ResetBrushConfiguration() {
    BrushOperation::ResetBrushConfiguration();
    SetBrushSize(25.0f);
}

void SwiftStroke::setBuildUpRate(float rate) {
    buildUpRate.SetValue(rate, true);
    buildUpRateCubed = rate * rate * rate;
}

int SwiftStroke::StrokeDrawMode() const {
    if (!IsImprint(ActiveConfiguration())) return 0;
    return drawFromCenter.Value() ? 1 : 2;
}

bool SwiftStroke::IsImprintTool() const { return IsImprint(ActiveConfiguration()); }
bool SwiftStroke::NonImprintQueryA() const { return !IsImprint(ActiveConfiguration()); }
bool SwiftStroke::NonImprintQueryB() const { return !IsImprint(ActiveConfiguration()); }

}  // namespace trovik
