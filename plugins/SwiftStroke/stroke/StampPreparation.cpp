// SPDX-License-Identifier: Apache-2.0
#include "brush/SwiftStroke.h"
#include "brush/Translation.h"

namespace trovik {

namespace {

/// The image kind of a stamp whose pixels are directions, which Smooth cannot use.
constexpr int directionImage = 1;

}  // namespace

bool SwiftStroke::IsVectorStampName(const QString& name) {
    return name.indexOf(QString::fromLatin1(".vdm"), 0, Qt::CaseInsensitive) >= 0 ||
           name.indexOf(QString::fromLatin1("_vdm"), 0, Qt::CaseInsensitive) >= 0;
}

void SwiftStroke::PrepareStamp() {
    stampEnabled = IsMaskEnabled(stampMask);
    stampTiled = IsMaskTiled(stampMask);
    Image* image = MaskImage(stampMask);
    if (isSmooth && image->ImageKind() == directionImage) stampEnabled = false;
    if (stampEnabled && image->Width() == 0) {
        g_pKernel->Interface()->HUDMessageShow(
            Translate("Please choose a stamp image first,\notherwise the brush will take no "
                      "effect."),
            HUDMessageWarning);
    }
    stampIsVector = stampEnabled && IsVectorStampName(MaskName(stampMask));
    if (!stampEnabled || image == nullptr) return;

    // The factor is compared as well, although it does not affect the cached pixels.
    const bool current = image == stampImage && IsMaskInverted(stampMask) == stampInverted &&
                         MaskFactor(stampMask) == stampFactor &&
                         MaskOffset(stampMask) == stampOffset &&
                         image->Version() == stampImageVersion && MaskName(stampMask) == stampName;
    if (current) return;
    try {
        RebuildStamp();
    } catch (...) {
        // The pixels are missing or incomplete; the next stroke rebuilds them.
        stampImage = nullptr;
        stampEnabled = false;
        throw;
    }
}

void SwiftStroke::RebuildStamp() {
    stampImage = MaskImage(stampMask);
    stampImageVersion = stampImage->Version();
    stampInverted = IsMaskInverted(stampMask);
    stampFactor = MaskFactor(stampMask);
    stampOffset = MaskOffset(stampMask);
    stampWidth = stampImage->Width();
    stampHeight = stampImage->Height();
    stampBuildUp = MaskBuildUp(stampMask);
    stampName = MaskName(stampMask);

    delete[] stampPixels;
    stampPixels = nullptr;
    stampIsVector = IsVectorStampName(stampName);
    const uint32_t channels = stampIsVector ? 3 : 1;
    const uint32_t count = stampHeight * channels * stampWidth;
    stampPixels = new float[count];
    const PixelDescriptor descriptor{static_cast<uint8_t>(channels), 3, 5, 0};
    stampImage->getTile(0,
                        0,
                        static_cast<int>(stampWidth),
                        static_cast<int>(stampHeight),
                        stampPixels,
                        &descriptor);

    // An inverted stamp adds the offset to its values; any other stamp subtracts it.
    const float offset = MaskOffset(stampMask);
    for (uint32_t i = 0; i < count; ++i) {
        stampPixels[i] = stampInverted ? (1.0f - stampPixels[i]) + offset : stampPixels[i] - offset;
    }
}

}  // namespace trovik
