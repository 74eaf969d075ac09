// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/PenChunk.h"

#include "framework/scene/SceneChunks.h"

#include <string>
#include <vector>

namespace trovik {

namespace {

void WriteCurve(SceneStream& stream, const PressureCurve& curve) {
    WriteList(stream, curve.Points());
}

PressureCurve ReadCurve(SceneStream& stream, const char* what) {
    auto points = ReadList<PressureCurve::Point>(stream);
    if (points.empty()) return {};
    std::size_t index = 0;
    if (const auto flaw = PressureCurve::Flaw(points, index)) {
        SceneStream::Refuse(QStringLiteral("the pressure curve for %1: %2")
                                .arg(QLatin1String(what), QString::fromStdString(*flaw)));
    }
    return PressureCurve(std::move(points));
}

void Limit(float value, float least, float most, const char* what) {
    // NaN is rejected as well.
    if (value >= least && value <= most) return;
    SceneStream::Refuse(QStringLiteral("%1 is not within %2 to %3")
                            .arg(QLatin1String(what))
                            .arg(static_cast<double>(least))
                            .arg(static_cast<double>(most)));
}

void TransferNumbers(SceneStream& stream, DabDynamics& dynamics) {
    stream.Transfer(dynamics.randomSize);
    uint8_t turns = dynamics.tiltRotatesStamp ? 1 : 0;
    stream.Transfer(turns);
    dynamics.tiltRotatesStamp = turns != 0;
    stream.Transfer(dynamics.tiltToSize);
    stream.Transfer(dynamics.tiltToStrength);
    stream.Transfer(dynamics.radiusPixels);
    stream.Transfer(dynamics.airbrush);
}

}  // namespace

void WritePenChunk(SceneStream& stream, const DabDynamics& dynamics) {
    DabDynamics copy = dynamics;
    WriteCurve(stream, copy.strengthCurve);
    WriteCurve(stream, copy.sizeCurve);
    TransferNumbers(stream, copy);
}

DabDynamics ReadPenChunk(SceneStream& stream) {
    DabDynamics dynamics;
    dynamics.strengthCurve = ReadCurve(stream, "strength");
    dynamics.sizeCurve = ReadCurve(stream, "size");
    TransferNumbers(stream, dynamics);
    Limit(dynamics.randomSize, 0.0f, 1.0f, "the random variation of the size");
    Limit(dynamics.tiltToSize, -1.0f, 4.0f, "the effect of tilt on size");
    Limit(dynamics.tiltToStrength, -1.0f, 4.0f, "the effect of tilt on strength");
    Limit(dynamics.radiusPixels, 0.0f, 16384.0f, "the radius in pixels");
    Limit(dynamics.airbrush, 0.0f, 1000.0f, "the airbrush rate");
    return dynamics;
}

}  // namespace trovik
