// SPDX-License-Identifier: Apache-2.0

/// \file The tools of the grab brush and their settings.
#include "framework/brushes/ToolTraits.h"
#include "framework/grab/GrabBrush.h"
#include "framework/nodes/SceneStream.h"
#include "framework/strokes/ImprintStroke.h"
#include "host/FalloffIndex.h"

#include <QCoreApplication>

#include <initializer_list>

namespace trovik {

namespace {

constexpr float defaultStrength = 100.0f;

Node* Create(unsigned) { return new GrabBrush; }

QString DescriptionOf(const QString& toolName) {
    for (const HostTool& tool : HostTools())
        if (toolName == QLatin1String(tool.name))
            return QCoreApplication::translate("ToolCatalogue", tool.description);
    return {};
}

}  // namespace

GrabBrush::GrabBrush()
    : connectedOnly(this, QStringLiteral("connectedonly")),
      alongNormal(this, QStringLiteral("alongnormal")),
      elasticMode(this, QStringLiteral("elasticmode")),
      elasticScales(this, QStringLiteral("elasticscales")),
      poissonRatio(this,
                   QStringLiteral("poissonratio"),
                   0.0f,
                   Kelvinlet::maxPoissonRatio,
                   Kelvinlet::maxPoissonRatio,
                   2) {
    SetDefaults();
    ShowSettings();
}

GrabBrush::~GrabBrush() = default;

int GrabBrush::StrokeDrawMode() const {
    return static_cast<int>(ActiveTool() == SnakeHook ? DrawMode::Pull : DrawMode::Drag);
}

uint32_t GrabBrush::ActiveTool() const {
    const BrushConfiguration* tool = ActiveConfiguration();
    return tool == nullptr ? uint32_t{Grab} : tool->ID();
}

bool GrabBrush::SetActiveConfiguration(const QString& toolName) {
    BrushConfiguration* tool = ToolOf(toolName);
    if (tool == nullptr) return false;
    SetActiveConfiguration(tool);
    return true;
}

void GrabBrush::SetActiveConfiguration(BrushConfiguration* configuration) {
    const bool isNew = configuration != nullptr && configuration != ActiveConfiguration() &&
                       !IsConfigurationInited(configuration);
    BrushOperation::SetActiveConfiguration(configuration);
    if (isNew) SetDefaults();
    ShowSettings();
}

void GrabBrush::SetDefaults() {
    SetBrushStrength(defaultStrength);
    SetFalloffIndex(smoothFalloffIndex);
    connectedOnly = false;
    alongNormal = false;
    const ElasticMaterial material;
    elasticMode = static_cast<int>(ElasticMode::Grab);
    elasticScales = material.scales;
    poissonRatio.SetValue(material.poissonRatio, true);
    strokeOptionC = false;
    strokeOptionD = false;
}

void GrabBrush::Serialize(Stream& stream) {
    BrushOperation::Serialize(stream);
    connectedOnly.Serialize(stream);
    alongNormal.Serialize(stream);
    elasticMode.Serialize(stream);
    elasticScales.Serialize(stream);
    poissonRatio.Serialize(stream);
    if (!stream.IsStoring()) CheckElastic();
}

void GrabBrush::CheckElastic() const {
    const int mode = elasticMode.Value();
    if (mode < 0 || mode > static_cast<int>(ElasticMode::Pinch))
        SceneStream::Refuse(QStringLiteral("unknown elastic deformation %1").arg(mode));
    const int scales = elasticScales.Value();
    if (scales < 1 || scales > Kelvinlet::maxScales)
        SceneStream::Refuse(QStringLiteral("%1 elastic scales; 1 to 3 are accepted").arg(scales));
    const float ratio = poissonRatio.Value();
    if (!(ratio >= 0.0f && ratio <= Kelvinlet::maxPoissonRatio))
        SceneStream::Refuse(
            QStringLiteral("a Poisson ratio of %1; 0 to 0.5 is accepted").arg(ratio));
}

void GrabBrush::ShowSettings() {
    const bool isHook = ActiveTool() == SnakeHook;
    const bool isElastic = ActiveTool() == ElasticGrab;
    connectedOnly.SetVisible(!isHook);
    alongNormal.SetVisible(!isHook);
    elasticMode.SetVisible(isElastic);
    elasticScales.SetVisible(isElastic);
    poissonRatio.SetVisible(isElastic);
    strokeSmoothingAttribute.SetVisible(isHook);
    steadyStrokeAttribute.SetVisible(isHook);
    for (Attribute* unused : std::initializer_list<Attribute*>{&directionAttribute,
                                                               &strokeFloatA,
                                                               &strokeFloatB,
                                                               &resetOptionA,
                                                               &separatorOption,
                                                               &imprintPairAttribute})
        unused->SetVisible(false);
}

const ClassDesc* GrabBrush::StaticClass() {
    static const ClassDesc desc(BrushOperation::StaticClass(),
                                BrushOperation::StaticClass(),
                                QStringLiteral("GrabBrush"),
                                QStringLiteral("Grab brush"),
                                Create,
                                1,
                                0);
    return &desc;
}
const ClassDesc* GrabBrush::RuntimeClass() const { return StaticClass(); }

void RegisterGrabBrush() {
    [[maybe_unused]] static const bool isAdded = [] {
        for (BrushConfiguration* tool : GrabBrush::Tools()) BrushOperation::AddConfiguration(tool);
        return true;
    }();
}

// Never destroyed: brushes refer to them until the process ends.
std::span<BrushConfiguration* const> GrabBrush::Tools() {
    const auto make = [](Tool id, const QString& toolName) {
        return new BrushConfiguration(StaticClass(),
                                      id,
                                      toolName,
                                      toolName,
                                      PredefinedCategory::Sculpt,
                                      DescriptionOf(toolName),
                                      0);
    };
    static BrushConfiguration* const tools[] = {make(Grab, QStringLiteral("Grab")),
                                                make(ElasticGrab, QStringLiteral("ElasticGrab")),
                                                make(SnakeHook, QStringLiteral("SnakeHook"))};
    return tools;
}

BrushConfiguration* GrabBrush::ToolOf(const QString& toolName) {
    for (BrushConfiguration* tool : Tools())
        if (tool->Name() == toolName) return tool;
    return nullptr;
}

}  // namespace trovik
