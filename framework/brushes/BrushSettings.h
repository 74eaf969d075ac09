// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/brushes/Falloff.h"
#include "framework/brushes/FalloffTable.h"
#include "framework/detail/DetailSettings.h"
#include "framework/mesh/StrokeResources.h"
#include "host/BrushOperation.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trovik {

/// A brush's host-side state: all settings that scripts and panels can change, except attributes.
struct BrushOperation::Private {
    explicit Private(BrushOperation& brush) : strokeResources(brush) {}

    float size = 25.0f;      ///< 0 to 100
    float strength = 15.0f;  ///< 0 to 100, in percent
    float sizeBias = 0.0f;   ///< pressure-independent part, in percent
    float strengthBias = 0.0f;
    bool orientedToSurface = true;
    bool screenSpace = false;
    bool inverted = false;  ///< whether the open stroke was started with ModifierInvert

    int falloffIndex = smoothFalloffIndex;  ///< customFalloffIndex: user-defined samples
    FalloffTable falloff{falloffIndex};

    // The stamp (mask -1).
    StampConfiguration stamp;
    QString stampName;       ///< returned by MaskName
    QString stampImagePath;  ///< StampConfiguration::path from which stampImage was loaded
    std::shared_ptr<Image> stampImage;  ///< null if there is none
    /// Stamp images of other tools, by path; an entry is valid while its image is in use elsewhere.
    std::map<QString, std::weak_ptr<Image>> cachedStampImages;
    bool stampTiled = false;
    bool stampInverted = false;
    bool stampBuildUp = false;
    float stampFactor = 1.0f;
    float stampOffset = 0.0f;
    Matrix stampMatrix;              ///< set by the stroke loop for each dab
    bool mirroredStampRead = false;  ///< whether mask 1 is enabled; see BrushMask.cpp

    DabDetail detail;  ///< set by the stroke loop for each dab

    Vector directionVector;  ///< last argument of SetDirectionVector, used for the cursor
    bool directionVectorSet = false;

    BrushConfiguration* active = nullptr;
    /// Stored settings of each tool, serialised.
    std::map<const BrushConfiguration*, std::vector<uint8_t>> stored;

    StrokeResources strokeResources;
};

/// Reads or writes the settings that are not attributes, except for the size, which all tools
/// share. Values read are clamped to their ranges.
void TransferPlainSettings(BrushOperation& brush, Stream& stream);

}  // namespace trovik
