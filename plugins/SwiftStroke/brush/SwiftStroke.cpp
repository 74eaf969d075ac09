// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"

#include "brush/Registration.h"
#include "brush/Translation.h"
#include "kernels/stages/PackedNormals.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace trovik {

namespace {

// Writing this command to the kernel's command attribute switches off rendering during strokes.
constexpr const char* noRenderCommand = "swiftstroke_norender";

constexpr std::size_t brushSpaceBytes = 255;

}  // namespace

SwiftStroke::SwiftStroke()
    : bilinearSample(this, QString::fromLatin1("bilinearsample")),
      globalPlane(this, QString::fromLatin1("globalplane"), false),
      updatePlane(this, QString::fromLatin1("updateplane"), true),
      affectAllLayers(this, QString::fromLatin1("affectalllayers"), true),
      drawFromCenter(this, QString::fromLatin1("drawfromcenter"), true),
      falloffName(this, QString::fromLatin1("")),
      buildUpRate(this, QString::fromLatin1("builduprate"), 0.0f, 1.0f, 1.0f, 2) {
    const TVCrashReporterFlag flag(4, 1);
    falloffName.SetCategory(Translate("Falloff"), false);
    falloffName.SetVisible(false);
    SetBrushStrengthScale(1.0f);
    globalPlane.SetValue(false, true);
    updatePlane.SetValue(true, true);
    radius = 1.0f;
    radiusSquared = 1.0f;
    inverseRadius = 1.0f;
    falloffLastFloat = 1.0f;

    // The block must be aligned, because the kernels load it as vectors.
    brushSpaceAllocation = std::malloc(brushSpaceBytes);
    if (brushSpaceAllocation == nullptr) throw std::bad_alloc();
    std::memset(brushSpaceAllocation, 0, brushSpaceBytes);
    void* start = brushSpaceAllocation;
    std::size_t room = brushSpaceBytes;
    brushSpace = static_cast<BrushSpace*>(std::align(16, sizeof(BrushSpace), start, room));
    brushSpace->inverseScale = HWVector(Vector(1.0f, 1.0f, 1.0f));

    const bool testMode = g_pKernel->IsTestModeOn();
    renderSwiftStroke.attribute->SetVisible(testMode);
    swiftStrokeLevelFactor.attribute->SetVisible(testMode);
    useOriginalDataForFlatten.attribute->SetVisible(testMode);
    useVertexWeightsForFlatten.attribute->SetVisible(testMode);
    waxFillsOnly.attribute->SetVisible(testMode);
    waxScrapesOnly.attribute->SetVisible(testMode);

    falloffName.Connect(g_pKernel->kernelCommandAttribute, false);
    LoadTemplate(QString::fromLatin1(""), false);
    // The rate is set after the template is loaded, so that a rate stored in the template has no
    // effect.
    buildUpRate.SetValue(0.5f, true);
    strokeOptionE.SetVisible(true);
    alternateBehavior.modifier = ModifierSmooth;
    alternateBehavior.name = QString::fromLatin1("Smooth");
}

SwiftStroke::~SwiftStroke() {
    const TVCrashReporterFlag flag(4, 2);
    ReleaseScratch();
    std::free(brushSpaceAllocation);
    delete[] stampPixels;
}

void SwiftStroke::ReleaseScratch() {
    patchCache.Forget();
    std::free(patchVertexList);
    patchVertexList = nullptr;
    patchVertexListCapacity = 0;
    listedSlice = nullptr;
    std::free(spareScratch);
    spareScratch = nullptr;
    spareScratchSize = 0;
}

Node* SwiftStroke::Create(unsigned count) {
    if (count < 2) {
        auto* brush = new SwiftStroke;
        brush->Initialize();
        return brush;
    }
    auto* brushes = new SwiftStroke[count];
    for (unsigned i = 0; i < count; ++i) brushes[i].Initialize();
    return brushes;
}

const ClassDesc* SwiftStroke::StaticClass() { return &swiftStrokeClass; }
const ClassDesc* SwiftStroke::RuntimeClass() const { return &swiftStrokeClass; }

const BrushOperation& SwiftStroke::operator=(const BrushOperation& other) {
    const TVCrashReporterFlag flag(4, 262144);
    DetailBrush::operator=(other);
    if (const auto* brush = dynamic_cast<const SwiftStroke*>(&other)) {
        buildUpRate = brush->buildUpRate;
        bilinearSample.SetValue(brush->bilinearSample.Value(), true);
        affectAllLayers.SetValue(brush->affectAllLayers.Value(), true);
        globalPlane.SetValue(brush->globalPlane.Value(), true);
        updatePlane.SetValue(brush->updatePlane.Value(), true);
    }
    return *this;
}

void SwiftStroke::Serialize(Stream& stream) {
    const TVCrashReporterFlag flag(4, 131072);
    DetailBrush::Serialize(stream);
    stream << buildUpRate;
    bilinearSample.Serialize(stream);
    // Data of class version 0 ends here; the three attributes below then keep their values.
    if (stream.ClassVersion(StaticClass()) > 0) {
        affectAllLayers.Serialize(stream);
        globalPlane.Serialize(stream);
        updatePlane.Serialize(stream);
    }
}

void SwiftStroke::OnNodeEvent(const Attribute& attribute, NodeEventType type) {
    const TVCrashReporterFlag flag(4, 8);
    if (type == NodeEventValueChanged && &attribute == &falloffName &&
        falloffName.Value() == QString::fromLatin1(noRenderCommand)) {
        renderSwiftStroke.attribute->SetValue(false, true);
    }
    if (g_pKernel->IsTestModeOn())
        DetailBrush::OnNodeEvent(attribute, type);
    else
        // Intentionally skips the tessellating base class.
        // NOLINTNEXTLINE(bugprone-parent-virtual-call)
        BrushOperation::OnNodeEvent(attribute, type);
}

float SwiftStroke::BuildUpRate() const { return buildUpRate.Value(); }
bool SwiftStroke::AlwaysTrueQuery() const { return true; }
bool SwiftStroke::IsStrokeFree() { return !strokeActive; }

void SwiftStroke::Operator(Mesh*, uint32_t, uint32_t) {}

void SwiftStroke::setRadius(float value) {
    radius = value;
    radiusSquared = radius * radius;
    inverseRadius = 1.0f / radius;
    falloffScale = falloffLastFloat / radius;
}

void SwiftStroke::setFalloffLast(float value) {
    falloffLastFloat = value;
    falloffScale = value * inverseRadius;
    falloffLast = static_cast<int32_t>(value);
}

void SwiftStroke::setVertexNormal(uint32_t vertex, const HWVector& normal) {
    PackNormal(normal, mesh->vertexNormals[vertex]);
}

}  // namespace trovik
