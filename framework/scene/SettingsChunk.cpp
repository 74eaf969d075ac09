// SPDX-License-Identifier: Apache-2.0
#include "framework/scene/SettingsChunk.h"

#include "framework/errors/HostError.h"
#include "framework/math/IsFinite.h"
#include "framework/scene/SceneChunks.h"
#include "framework/strokes/MirrorMaps.h"
#include "framework/strokes/PathSteps.h"

#include <cmath>

namespace trovik {

namespace {

/// The maximum width and height of the view.
constexpr int32_t largestSide = 16384;
/// The other value, 0, is perspective.
constexpr uint8_t orthographicProjection = 1;

void TransferView(SceneStream& stream, StrokeView& view) {
    stream.Transfer(view.eye);
    stream.Transfer(view.target);
    stream.Transfer(view.up);
    stream.Transfer(view.verticalFieldOfView);
    int32_t width = view.width;
    int32_t height = view.height;
    stream.Transfer(width);
    stream.Transfer(height);
    view.width = width;
    view.height = height;
}

void CheckView(const StrokeView& view) {
    if (!IsFinite(view.eye) || !IsFinite(view.target) || !IsFinite(view.up))
        SceneStream::Refuse(QStringLiteral("the view's position is not finite"));
    if (!((view.up & (view.eye - view.target)).Length() > 0.0f))
        SceneStream::Refuse(QStringLiteral("the view has no direction"));
    if (!(view.verticalFieldOfView > 0.0f && view.verticalFieldOfView < 180.0f))
        SceneStream::Refuse(
            QStringLiteral("the view's field of view is not between 0 and 180 degrees"));
    for (const int side : {view.width, view.height})
        if (side < 1 || side > largestSide)
            SceneStream::Refuse(
                QStringLiteral("the view's width or height of %1 pixels is out of range")
                    .arg(side));
}

/// \throw HostError for settings that a stroke would reject.
void CheckBrush(const SceneSettings& settings) {
    if (!(settings.radius > 0.0f) || !std::isfinite(settings.radius))
        throw HostError("the radius is not above 0");
    CheckSpacing(settings.spacing);
}

}  // namespace

void WriteSettingsChunk(SceneStream& stream, const SceneSettings& settings) {
    // A scene that cannot be read again must not be written.
    CheckBrush(settings);
    SceneSettings copy = settings;
    TransferView(stream, copy.view);
    stream.Transfer(copy.radius);
    stream.Transfer(copy.spacing);
    stream.Transfer(copy.seed);
    stream.Transfer(copy.strokesBegun);
    int32_t mode = copy.mirrorMode;
    stream.Transfer(mode);
    WriteList(stream, copy.mirrorMaps);
}

void WriteProjectionChunk(SceneStream& stream, const StrokeView& view) {
    uint8_t projection = view.isOrthographic ? orthographicProjection : 0;
    stream.Transfer(projection);
}

void ReadProjectionChunk(SceneStream& stream, StrokeView& view) {
    uint8_t projection = 0;
    stream.Transfer(projection);
    if (projection > orthographicProjection)
        SceneStream::Refuse(
            QStringLiteral("the view's projection is %1; it must be 0 or 1").arg(projection));
    view.isOrthographic = projection == orthographicProjection;
}

namespace {

void TransferDetail(SceneStream& stream, DetailSettings& detail) {
    auto measure = static_cast<uint8_t>(detail.measure);
    uint8_t splits = detail.splits ? 1 : 0;
    uint8_t collapses = detail.collapses ? 1 : 0;
    stream.Transfer(measure);
    stream.Transfer(detail.length);
    stream.Transfer(splits);
    stream.Transfer(collapses);
    stream.Transfer(detail.creaseAngle);
    if (measure > static_cast<uint8_t>(DetailSettings::Measure::Pixels))
        SceneStream::Refuse(
            QStringLiteral("the unit of the detail is %1; it must be at most 3").arg(measure));
    detail.measure = static_cast<DetailSettings::Measure>(measure);
    detail.splits = splits != 0;
    detail.collapses = collapses != 0;
}

}  // namespace

void WriteDetailChunk(SceneStream& stream, const DetailSettings& detail) {
    DetailSettings copy = detail;
    TransferDetail(stream, copy);
}

DetailSettings ReadDetailChunk(SceneStream& stream) {
    DetailSettings detail;
    TransferDetail(stream, detail);
    if (!(detail.length > 0.0f && detail.length <= 1e6f))
        SceneStream::Refuse(
            QStringLiteral("the edge length of the detail is %1; it must be above 0 and at most "
                           "1000000")
                .arg(static_cast<double>(detail.length)));
    if (!(detail.creaseAngle >= 0.0f && detail.creaseAngle <= 180.0f))
        SceneStream::Refuse(
            QStringLiteral("the crease angle of the detail is %1; it must be 0 to 180")
                .arg(static_cast<double>(detail.creaseAngle)));
    return detail;
}

void ReadSettingsChunk(SceneStream& stream, SceneSettings& settings) {
    TransferView(stream, settings.view);
    CheckView(settings.view);
    stream.Transfer(settings.radius);
    stream.Transfer(settings.spacing);
    stream.Transfer(settings.seed);
    stream.Transfer(settings.strokesBegun);
    try {
        CheckBrush(settings);
    } catch (const HostError& refused) {
        SceneStream::Refuse(QString::fromStdString(refused.what()));
    }
    int32_t mode = 0;
    stream.Transfer(mode);
    settings.mirrorMode = mode;
    settings.mirrorMaps = ReadList<Matrix>(stream);
    if (settings.mirrorMaps.size() > maxMirrorMaps) {
        SceneStream::Refuse(
            QStringLiteral("too many mirrors (%1)").arg(settings.mirrorMaps.size()));
    }
    for (const Matrix& map : settings.mirrorMaps)
        for (const auto& row : map.m)
            for (const float number : row)
                if (!std::isfinite(number))
                    SceneStream::Refuse(QStringLiteral("a mirror transform is not finite"));
}

}  // namespace trovik
