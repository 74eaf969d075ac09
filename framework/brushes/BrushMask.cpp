// SPDX-License-Identifier: Apache-2.0

/// \file The functions of the brush that take a mask number. Mask -1 (stampMask) is the stamp. Mask
/// 1 is a switch without an image: if it is enabled, a dab on the other side of the topological
/// mirror reads the stamp at the mirror image of each vertex instead of at the vertex itself. No
/// other number refers to a mask.
#include "framework/brushes/BrushSettings.h"

namespace trovik {

namespace {

constexpr int mirroredStampMask = 1;

/// The image returned for a mask without an image.
class EmptyImage : public Image {
public:
    uint32_t Width() const override { return 0; }
    uint32_t Height() const override { return 0; }
    int ImageKind() const override { return 0; }
    void getTile(int, int, int, int, void*, const PixelDescriptor*) override {}
};

Image* NoImage() {
    static EmptyImage image;
    return &image;
}

}  // namespace

bool BrushOperation::IsMaskEnabled(int mask) const {
    if (mask == stampMask) return d->stamp.enabled;
    return mask == mirroredStampMask && d->mirroredStampRead;
}
Image* BrushOperation::MaskImage(int mask) const {
    const bool has = mask == stampMask && d->stampImage != nullptr;
    return has ? d->stampImage.get() : NoImage();
}
Matrix BrushOperation::MaskMatrix(int) const { return d->stampMatrix; }
bool BrushOperation::IsMaskInverted(int mask) const {
    return mask == stampMask && d->stampInverted;
}
float BrushOperation::MaskFactor(int mask) const {
    return mask == stampMask ? d->stampFactor : 1.0f;
}
bool BrushOperation::IsMaskTiled(int mask) const { return mask == stampMask && d->stampTiled; }
QString BrushOperation::MaskName(int mask) const {
    return mask == stampMask ? d->stampName : QString();
}
bool BrushOperation::MaskBuildUp(int mask) const { return mask == stampMask && d->stampBuildUp; }
Image* BrushOperation::MaskOpacityImage(int) const { return NoImage(); }
float BrushOperation::MaskOffset(int mask) const {
    return mask == stampMask ? d->stampOffset : 0.0f;
}

void BrushOperation::OnMaskChanged(int mask) {
    if (mask != stampMask) return;
    if (d->stampImagePath != d->stamp.path) {
        const auto known = d->cachedStampImages.find(d->stamp.path);
        d->stampImage = known == d->cachedStampImages.end() ? nullptr : known->second.lock();
    }
    d->stampImagePath = d->stamp.path;
    // For an absolute path, only the file name is used, so that "vdm" in a folder name cannot turn
    // the file into a vector stamp.
    const QString& path = d->stamp.path;
    d->stampName = path.startsWith(u'/') ? path.mid(path.lastIndexOf(u'/') + 1) : path;
}

void BrushOperation::SetStamp(bool enabled, const QString& path) {
    d->stamp.enabled = enabled;
    d->stamp.path = path;
    OnMaskChanged(stampMask);
}

// A configuration defines all stamp settings of a tool, so every setting of the previous tool must
// be overwritten.
void BrushOperation::SetStampConfig(StampConfiguration& config) {
    d->stamp = config;
    d->stampTiled = false;
    d->stampInverted = false;
    d->stampBuildUp = false;
    d->stampFactor = 1.0f;
    d->stampOffset = 0.0f;
    d->orientedToSurface = true;
    OnMaskChanged(stampMask);
}

bool BrushOperation::UsesStampRandomize() const { return d->stamp.randomize; }
void BrushOperation::SetStampRandomize(bool on) { d->stamp.randomize = on; }
void BrushOperation::SetStampSizingMode(int) {}

}  // namespace trovik
