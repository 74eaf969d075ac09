// SPDX-License-Identifier: Apache-2.0
#include "host/BrushOperation.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/brushes/Falloff.h"

#include <algorithm>
#include <initializer_list>

namespace trovik {

StrokeResources* StrokeResources::Of(MeshUnlocker* holder) {
    auto* brush = dynamic_cast<BrushOperation*>(holder);
    return brush == nullptr ? nullptr : &brush->Settings().strokeResources;
}

namespace {

constexpr float largest = 100.0f;

/// Scales a setting by pressure; `bias` is the pressure-independent part, in percent.
float UnderPressure(float setting, float bias, float pressure) {
    const float fixed = bias * 0.01f;
    return setting * ((1.0f - fixed) * pressure + fixed);
}

float Within(float value, float limit) { return value > 0.0f ? std::min(value, limit) : 0.0f; }

}  // namespace

void Operation::ExecuteAndInvert() {}

BrushOperation::BrushOperation()
    : directionAttribute(this, QStringLiteral("direction"), 1),
      strokeSmoothingAttribute(this, QStringLiteral("strokesmoothing"), {true, 0.0625f}),
      steadyStrokeAttribute(this, QStringLiteral("steadystroke"), {false, 0.04f}),
      strokeFloatA(this, QStringLiteral("stampspacing"), 25.0f),
      strokeFloatB(this, QStringLiteral("stampspacingrandom"), 0.0f),
      strokeOptionC(this, QStringLiteral("pressurecontrolsstrength"), true),
      strokeOptionD(this, QStringLiteral("pressurecontrolssize"), false),
      strokeOptionE(this, QStringLiteral("snaptocurve"), false),
      resetOptionA(this, QStringLiteral("stamppositioning"), 0),
      separatorOption(this, QStringLiteral("stamprotation"), 0),
      imprintPairAttribute(this, QStringLiteral("imprintfade"), {false, 0.6f}),
      d(std::make_unique<Private>(*this)) {}

BrushOperation::~BrushOperation() = default;

int BrushOperation::StrokeDrawMode() const { return 0; }
bool BrushOperation::IsScreenSpace() const { return d->screenSpace; }
float BrushOperation::BrushSize() const { return d->size; }
float BrushOperation::BrushStrength() const { return d->strength; }
void BrushOperation::SetBrushSize(float size) { d->size = Within(size, MaxBrushSize()); }
void BrushOperation::SetBrushStrength(float strength) {
    d->strength = Within(strength, MaxBrushStrength());
}
float BrushOperation::EffectiveBrushSize(float pressure) const {
    return strokeOptionD.Value() ? UnderPressure(d->size, d->sizeBias, pressure) : d->size;
}
float BrushOperation::EffectiveBrushStrength(float pressure) const {
    return PressureControlsBrushStrength() ? UnderPressure(d->strength, d->strengthBias, pressure)
                                           : d->strength;
}
float BrushOperation::BrushSizeBias() const { return d->sizeBias; }
float BrushOperation::BrushStrengthBias() const { return d->strengthBias; }
float BrushOperation::MaxBrushSize() const { return largest; }
float BrushOperation::MaxBrushStrength() const { return largest; }

bool BrushOperation::UsesStrokeSmoothing() const {
    return strokeSmoothingAttribute.Value().checked;
}
float BrushOperation::StrokeSmoothingDistance() const {
    return strokeSmoothingAttribute.Value().value;
}
void BrushOperation::SetStrokeSmoothing(bool on, float distance) {
    strokeSmoothingAttribute.SetValue({on, distance}, true);
}
bool BrushOperation::HasCustomCursor() const { return false; }
bool BrushOperation::UsesSteadyStroke() const { return steadyStrokeAttribute.Value().checked; }
float BrushOperation::SteadyStrokeDistance() const { return steadyStrokeAttribute.Value().value; }
void BrushOperation::SetSteadyStroke(bool on, float distance) {
    steadyStrokeAttribute.SetValue({on, distance}, true);
}

QString BrushOperation::Falloff() const {
    return QString::fromStdString(FalloffName(d->falloffIndex));
}
void BrushOperation::SetFalloff(const QString& curve) {
    const int index = FalloffIndexOf(curve.toStdString());
    if (index >= 0) SetFalloffIndex(index);
}
const Store<float>& BrushOperation::FalloffData() const { return d->falloff.Lend(); }
void BrushOperation::SetFalloffIndex(int index) {
    // The table cannot recreate user-defined samples, so they are kept if the user-defined curve is
    // already selected.
    if (index == customFalloffIndex && d->falloffIndex == customFalloffIndex) return;
    const int known = IsFalloffIndex(index) ? index : smoothFalloffIndex;
    d->falloff.Set(known);
    d->falloffIndex = known;
}
int BrushOperation::FalloffIndex() const { return d->falloffIndex; }

bool BrushOperation::UsesFalloffBasedOnFacingAngle() const {
    return CheckableFloatArray::s_bActive;
}
void BrushOperation::SetFalloffBasedOnFacingAngle(bool on, float start, float range) {
    CheckableFloatArray::s_bActive = on;
    facingAngleStart = start;
    facingAngleRange = range;
}

float BrushOperation::BuildUpRate() const { return 1.0f; }
bool BrushOperation::IsImprintTool() const { return false; }
bool BrushOperation::NonImprintQueryA() const { return true; }
bool BrushOperation::NonImprintQueryB() const { return true; }
bool BrushOperation::PressureControlsBrushStrength() const { return strokeOptionC.Value(); }
bool BrushOperation::IsInverted() const { return d->inverted; }
bool BrushOperation::IsOrientedToSurface() const { return d->orientedToSurface; }
void BrushOperation::SetOrientedToSurface(bool on) { d->orientedToSurface = on; }
void BrushOperation::SetDirectionVector(const Vector& direction) {
    d->directionVector = direction;
    d->directionVectorSet = true;
}

void BrushOperation::BeginStroke(trovik::Mesh*, Modifier modifier, TriggerType) {
    d->falloff.BeginStroke();
    d->inverted = modifier == ModifierInvert;
    previousPatchPosition = Vector();
    d->directionVectorSet = false;
}
void BrushOperation::EndStroke() { d->inverted = false; }
void BrushOperation::MouseMove() {}
void BrushOperation::ApplyDab(
    const SurfacePoint&, const Vector&, float, float, float, AxisAlignedBoundingBox&) {}
void BrushOperation::ApplyToWholeMesh(trovik::Mesh*, float, bool) {}
void BrushOperation::SetMirrorConfig(const MirrorConfiguration& config) { mirrorConfig = config; }
QString BrushOperation::OverlayIcon() const { return {}; }
int BrushOperation::OverlayOffset() const { return 0; }

const BrushOperation& BrushOperation::operator=(const BrushOperation& other) {
    if (this == &other) return *this;
    Private& s = *d;
    const Private& o = *other.d;
    SetBrushSize(o.size);
    SetBrushStrength(o.strength);
    s.sizeBias = o.sizeBias;
    s.strengthBias = o.strengthBias;
    s.orientedToSurface = o.orientedToSurface;
    s.screenSpace = o.screenSpace;
    s.falloffIndex = o.falloffIndex;
    s.falloff.Set(o.falloff.Current());
    s.stamp = o.stamp;
    s.stampName = o.stampName;
    s.stampImagePath = o.stampImagePath;
    s.stampImage = o.stampImage;
    s.stampTiled = o.stampTiled;
    s.stampInverted = o.stampInverted;
    s.stampBuildUp = o.stampBuildUp;
    s.stampFactor = o.stampFactor;
    s.stampOffset = o.stampOffset;
    directionAttribute = other.directionAttribute;
    strokeSmoothingAttribute = other.strokeSmoothingAttribute;
    steadyStrokeAttribute = other.steadyStrokeAttribute;
    strokeFloatA = other.strokeFloatA;
    strokeFloatB = other.strokeFloatB;
    strokeOptionC = other.strokeOptionC;
    strokeOptionD = other.strokeOptionD;
    strokeOptionE = other.strokeOptionE;
    resetOptionA = other.resetOptionA;
    separatorOption = other.separatorOption;
    imprintPairAttribute = other.imprintPairAttribute;
    mirrorConfig = other.mirrorConfig;
    facingAngleStart = other.facingAngleStart;
    facingAngleRange = other.facingAngleRange;
    return *this;
}

bool BrushOperation::AlwaysTrueQuery() const { return true; }
bool BrushOperation::CustomPicker() const { return false; }
Node* BrushOperation::AttributeHolderNode() { return this; }
unsigned BrushOperation::AlternateBehaviorCount() const {
    return alternateBehavior.modifier == 0 ? 0 : 1;
}
QString BrushOperation::AlternateBehavior(unsigned index) const {
    return index < AlternateBehaviorCount() ? alternateBehavior.name : QString();
}
bool BrushOperation::IsSnapToCurve() const { return strokeOptionE.Value(); }
float BrushOperation::SnapDistance() const { return 0.0f; }
bool BrushOperation::ShowBrushInStroke() const { return true; }
void BrushOperation::OnEdgeSplit(trovik::Mesh*, uint32_t, uint32_t, uint32_t) {}
void BrushOperation::OnEdgeFlip(trovik::Mesh*, uint32_t, uint32_t) {}
void BrushOperation::OnEdgeCollapse(trovik::Mesh*, uint32_t, uint32_t) {}
Vector BrushOperation::VertexOriginalPosition(trovik::Mesh* mesh, uint32_t vertex) {
    const Vertex& v = mesh->vertices[vertex];
    return {v.x, v.y, v.z};
}

void BrushOperation::Serialize(Stream& stream) {
    Operation::Serialize(stream);
    stream.Transfer(d->size);
    for (Attribute* attribute : std::initializer_list<Attribute*>{&directionAttribute,
                                                                  &strokeSmoothingAttribute,
                                                                  &steadyStrokeAttribute,
                                                                  &strokeFloatA,
                                                                  &strokeFloatB,
                                                                  &strokeOptionC,
                                                                  &strokeOptionD,
                                                                  &strokeOptionE,
                                                                  &resetOptionA,
                                                                  &separatorOption,
                                                                  &imprintPairAttribute})
        attribute->Serialize(stream);
    TransferPlainSettings(*this, stream);
    if (!stream.IsStoring()) SetBrushSize(d->size);
}

const ClassDesc* BrushOperation::StaticClass() {
    static const ClassDesc desc(Node::StaticClass(),
                                Node::StaticClass(),
                                QStringLiteral("BrushOperation"),
                                QStringLiteral("Brush"),
                                nullptr,
                                1,
                                0);
    return &desc;
}
const ClassDesc* BrushOperation::RuntimeClass() const { return StaticClass(); }

}  // namespace trovik
