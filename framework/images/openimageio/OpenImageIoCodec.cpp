// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/Cancelled.h"
#include "framework/images/ImageCodec.h"
#include "framework/images/ImageLimits.h"
#include "framework/images/SampleValue.h"
#include "framework/io/FilePath.h"
#include "framework/jobs/JobPhase.h"
#include "framework/modules/ModuleEntry.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

namespace trovik {

namespace {

/// Pixels are converted in blocks of about this size, to avoid a second copy of the image.
constexpr std::size_t BlockBytes = std::size_t{4} << 20;

/// Checks the width, the height and the number of channels.
void CheckSize(const std::string& path, const OIIO::ImageSpec& spec, std::size_t maxBytes) {
    CheckImageSize(path, spec.width, spec.height, spec.nchannels, maxBytes);
    if (spec.depth > 1) {
        ThrowImageError("read", path, "volume images are not supported");
    }
    if (spec.deep) {
        ThrowImageError("read", path, "deep images are not supported");
    }
}

/// Reads all rows as `Sample`, the file's sample type, and converts them.
template <class Sample>
void ReadRows(OIIO::ImageInput& input,
              OIIO::TypeDesc type,
              const std::string& path,
              FloatImage& image) {
    const OIIO::ImageSpec spec = input.spec();
    const std::size_t rowValues = std::size_t{image.width} * image.channels;
    // Tiles are always read as a whole, so a tile would be read twice if a block of rows ended
    // inside it.
    const auto tileRows = static_cast<std::size_t>(std::max(spec.tile_height, 1));
    const std::size_t fitting = std::max<std::size_t>(BlockBytes / (rowValues * sizeof(Sample)), 1);
    const std::size_t blockRows = (fitting + tileRows - 1) / tileRows * tileRows;
    std::vector<Sample> block(rowValues * std::min<std::size_t>(blockRows, image.height));

    for (std::size_t row = 0; row < image.height; row += blockRows) {
        const std::size_t rows = std::min<std::size_t>(blockRows, image.height - row);
        const int first = spec.y + static_cast<int>(row);
        const int last = first + static_cast<int>(rows);
        const bool done =
            spec.tile_width > 0
                ? input.read_tiles(0,
                                   0,
                                   spec.x,
                                   spec.x + spec.width,
                                   first,
                                   last,
                                   spec.z,
                                   spec.z + 1,
                                   0,
                                   spec.nchannels,
                                   type,
                                   block.data())
                : input.read_scanlines(
                      0, 0, first, last, spec.z, 0, spec.nchannels, type, block.data());
        // For some formats, the library returns zeros for unreadable data and reports success.
        std::string error = input.geterror();
        if (!done || !error.empty()) {
            ThrowImageError("read", path, std::move(error));
        }
        std::transform(block.begin(),
                       block.begin() + static_cast<std::ptrdiff_t>(rows * rowValues),
                       image.pixels.begin() + static_cast<std::ptrdiff_t>(row * rowValues),
                       SampleValue<Sample>);
    }
}

OIIO::TypeDesc LibraryType(SampleType type) {
    switch (type) {
        case SampleType::UInt8:
            return OIIO::TypeUInt8;
        case SampleType::UInt16:
            return OIIO::TypeUInt16;
        case SampleType::Int16:
            return OIIO::TypeInt16;
        case SampleType::Float:
            break;
    }
    return OIIO::TypeFloat;
}

/// Reports the number of rows that the library has encoded. The library calls it between blocks of
/// rows.
class EncodingProgress {
public:
    EncodingProgress(JobControl* job, std::uint32_t imageRows)
        : phase(job, "Encoding the image", imageRows, 1), rows(imageRows) {}

    /// Callback for OIIO::ImageOutput::write_image.
    /// \return true to cancel.
    static bool Call(void* progress, float portion) {
        auto& self = *static_cast<EncodingProgress*>(progress);
        // Exceptions must not propagate through the library.
        try {
            self.phase.Reach(static_cast<std::uint64_t>(portion * static_cast<float>(self.rows)));
        } catch (const Cancelled&) {
            self.isCancelled = true;
        }
        return self.isCancelled;
    }
    bool IsCancelled() const { return isCancelled; }
    void Finish() { phase.Finish(); }

private:
    JobPhase phase;
    std::uint32_t rows;
    bool isCancelled = false;
};

class OpenImageIoCodec final : public ImageCodec {
public:
    FloatImage Read(const std::string& path, std::size_t maxBytes) const override;
    std::string ReadDescription(const std::string& path) const override;
    std::vector<unsigned char> Encode(const std::string& path,
                                      const EncodedImage& image,
                                      JobControl* job) const override;
};

FloatImage OpenImageIoCodec::Read(const std::string& path, std::size_t maxBytes) const {
    OIIO::ImageSpec asTheyStand;
    asTheyStand.attribute("oiio:UnassociatedAlpha", 1);
    const std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(path, &asTheyStand);
    if (!input) {
        ThrowImageError("read", path, OIIO::geterror());
    }
    // Errors are stored per thread, so those of other threads would be lost.
    input->threads(1);
    const OIIO::ImageSpec spec = input->spec();
    CheckSize(path, spec, maxBytes);

    FloatImage image;
    image.width = static_cast<std::uint32_t>(spec.width);
    image.height = static_cast<std::uint32_t>(spec.height);
    image.channels = static_cast<std::uint32_t>(spec.nchannels);
    image.pixels.resize(std::size_t{image.width} * image.height * image.channels);
    // If the channels have different types, which EXR files allow, all are read as floats.
    const OIIO::TypeDesc type = spec.channelformats.empty() ? spec.format : OIIO::TypeFloat;
    switch (type.basetype) {
        case OIIO::TypeDesc::UINT8:
            ReadRows<std::uint8_t>(*input, OIIO::TypeUInt8, path, image);
            break;
        case OIIO::TypeDesc::INT8:
            ReadRows<std::int8_t>(*input, OIIO::TypeInt8, path, image);
            break;
        case OIIO::TypeDesc::UINT16:
            ReadRows<std::uint16_t>(*input, OIIO::TypeUInt16, path, image);
            break;
        case OIIO::TypeDesc::INT16:
            ReadRows<std::int16_t>(*input, OIIO::TypeInt16, path, image);
            break;
        case OIIO::TypeDesc::UINT32:
            ReadRows<std::uint32_t>(*input, OIIO::TypeUInt32, path, image);
            break;
        case OIIO::TypeDesc::INT32:
            ReadRows<std::int32_t>(*input, OIIO::TypeInt32, path, image);
            break;
        case OIIO::TypeDesc::DOUBLE:
            image.isFloat = true;
            ReadRows<double>(*input, OIIO::TypeDesc(OIIO::TypeDesc::DOUBLE), path, image);
            break;
        default:
            image.isFloat = true;
            ReadRows<float>(*input, OIIO::TypeFloat, path, image);
            break;
    }
    if (image.isFloat) {
        CheckImageFinite("read", path, image);
    }
    return image;
}

std::vector<unsigned char> OpenImageIoCodec::Encode(const std::string& path,
                                                    const EncodedImage& image,
                                                    JobControl* job) const {
    const std::unique_ptr<OIIO::ImageOutput> output = OIIO::ImageOutput::create(path);
    if (!output) {
        OIIO::geterror();
        ThrowImageError(
            "write", path, "no image format has the extension '" + LowerExtension(path) + "'");
    }
    const OIIO::TypeDesc type = LibraryType(image.type);
    OIIO::ImageSpec spec(static_cast<int>(image.width),
                         static_cast<int>(image.height),
                         static_cast<int>(image.channels),
                         type);
    if (!image.description.empty()) spec.attribute("ImageDescription", image.description);
    // Without this attribute, some writers divide the colours by alpha.
    spec.attribute("oiio:UnassociatedAlpha", 1);
    // Formats that store a timestamp would otherwise store the current time, and no two files would
    // be identical.
    spec.attribute("DateTime", "1970:01:01 00:00:00");
    std::vector<unsigned char> bytes;
    OIIO::Filesystem::IOVecOutput memory(bytes);
    if (!output->supports("ioproxy") || !output->set_ioproxy(&memory)) {
        ThrowImageError("write", path, "this format cannot be written to memory");
    }
    EncodingProgress progress(job, image.height);
    const bool done = output->open(path, spec) &&
                      output->write_image(type,
                                          image.samples,
                                          OIIO::AutoStride,
                                          OIIO::AutoStride,
                                          OIIO::AutoStride,
                                          EncodingProgress::Call,
                                          &progress) &&
                      output->close();
    if (progress.IsCancelled()) {
        // The writer must be closed here, because `memory`, which it uses, is destroyed before it.
        output->close();
        throw Cancelled();
    }
    if (!done) {
        std::string reason = output->geterror();
        output->close();
        ThrowImageError(
            "write", path, reason.empty() ? "the library reports no reason" : std::move(reason));
    }
    progress.Finish();
    return bytes;
}

std::string OpenImageIoCodec::ReadDescription(const std::string& path) const {
    const std::unique_ptr<OIIO::ImageInput> input = OIIO::ImageInput::open(path);
    if (!input) {
        ThrowImageError("read", path, OIIO::geterror());
    }
    return std::string(input->spec().get_string_attribute("ImageDescription"));
}

}  // namespace

}  // namespace trovik

const void* trovikModule(const char* libraryVersion) {
    static const trovik::OpenImageIoCodec codec;
    const trovik::ImageCodec* interface = &codec;
    return std::strcmp(libraryVersion, TROVIK_MODULE_VERSION) == 0 ? interface : nullptr;
}
