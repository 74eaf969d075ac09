// SPDX-License-Identifier: Apache-2.0
#include "framework/images/PngFile.h"

#include "framework/images/ImageLimits.h"
#include "framework/images/SampleValue.h"
#include "framework/io/InputFile.h"

#include <algorithm>
#include <bit>
#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <png.h>
#include <vector>

namespace trovik {

namespace {

constexpr std::size_t SignatureBytes = 8;

/// libpng reports errors with longjmp. Each call into it is guarded by Run. No object with a
/// destructor may be alive in the frames that the jump skips.
class PngReader {
public:
    explicit PngReader(const std::string& filePath) : path(filePath) {
        InputFile file(path);
        const auto size = static_cast<std::size_t>(file.Remaining());
        const unsigned char* bytes = size == 0 ? nullptr : file.Take(size);
        if (bytes != nullptr) {
            content.assign(bytes, bytes + size);
        }
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, OnError, OnWarning);
        info = png == nullptr ? nullptr : png_create_info_struct(png);
        if (info == nullptr) {
            ThrowImageError("read", path, "there is not enough memory");
        }
        png_set_read_fn(png, this, OnRead);
        Run([this] { png_read_info(png, info); });
    }

    FloatImage ReadPixels(std::size_t maxBytes) {
        int passes = 1;
        Run([this, &passes] {
            png_set_expand(png);
            if (std::endian::native == std::endian::little) {
                png_set_swap(png);
            }
            passes = png_set_interlace_handling(png);
            png_read_update_info(png, info);
        });
        FloatImage image;
        image.width = png_get_image_width(png, info);
        image.height = png_get_image_height(png, info);
        image.channels = png_get_channels(png, info);
        CheckImageSize(path, image.width, image.height, image.channels, maxBytes);
        image.pixels.resize(std::size_t{image.width} * image.height * image.channels);
        const bool isWide = png_get_bit_depth(png, info) == 16;
        const std::size_t rowBytes = png_get_rowbytes(png, info);
        // An interlaced image is complete only after the last pass over all rows.
        std::vector<png_byte> rows(rowBytes * (passes > 1 ? image.height : 1));
        for (int pass = 0; pass < passes; ++pass) {
            for (std::uint32_t y = 0; y < image.height; ++y) {
                png_byte* const row = rows.data() + (passes > 1 ? y * rowBytes : 0);
                Run([this, row] { png_read_row(png, row, nullptr); });
                if (pass + 1 == passes) {
                    TakeRow(row, isWide, y, image);
                }
            }
        }
        return image;
    }

    std::string Description() const {
        png_textp texts = nullptr;
        int count = 0;
        png_get_text(png, info, &texts, &count);
        for (int i = 0; i < count; ++i) {
            if (std::strcmp(texts[i].key, "Description") == 0 && texts[i].text != nullptr) {
                return texts[i].text;
            }
        }
        return {};
    }

private:
    template <class Step>
    void Run(const Step& step) {
        if (setjmp(png_jmpbuf(png)) != 0) {
            ThrowImageError("read", path, reason);
        }
        step();
    }

    static void OnError(png_structp png, png_const_charp message) {
        char* const reason = static_cast<PngReader*>(png_get_error_ptr(png))->reason;
        std::strncpy(reason, message, MaxReasonBytes - 1);
        png_longjmp(png, 1);
    }

    /// Conditions that cause warnings, such as an unusual colour profile, do not affect the
    /// samples.
    static void OnWarning(png_structp, png_const_charp) {}

    static void OnRead(png_structp png, png_bytep bytes, std::size_t count) {
        auto& reader = *static_cast<PngReader*>(png_get_io_ptr(png));
        if (count > reader.content.size() - reader.position) {
            png_error(png, "the file ends too early");
        }
        std::memcpy(bytes, reader.content.data() + reader.position, count);
        reader.position += count;
    }

    static void TakeRow(const png_byte* row, bool isWide, std::uint32_t y, FloatImage& image) {
        const std::size_t values = std::size_t{image.width} * image.channels;
        float* const target = image.pixels.data() + y * values;
        for (std::size_t i = 0; i < values; ++i) {
            if (isWide) {
                std::uint16_t sample = 0;
                std::memcpy(&sample, row + i * sizeof sample, sizeof sample);
                target[i] = SampleValue(sample);
            } else {
                target[i] = SampleValue<std::uint8_t>(row[i]);
            }
        }
    }

    static constexpr std::size_t MaxReasonBytes = 200;

    /// A separate member, so that the handles are also released if the reader's constructor throws.
    struct Handles {
        Handles() = default;
        ~Handles() { png_destroy_read_struct(&png, &info, nullptr); }
        Handles(const Handles&) = delete;
        Handles& operator=(const Handles&) = delete;
        png_structp png = nullptr;
        png_infop info = nullptr;
    };

    const std::string& path;
    std::vector<unsigned char> content;
    std::size_t position = 0;
    Handles handles;
    png_structp& png = handles.png;
    png_infop& info = handles.info;
    char reason[MaxReasonBytes] = {};
};

}  // namespace

bool IsPngFile(const std::string& path) {
    InputFile file(path);
    const unsigned char* start = file.Take(SignatureBytes);
    return start != nullptr && png_sig_cmp(start, 0, SignatureBytes) == 0;
}

FloatImage ReadPngFile(const std::string& path, std::size_t maxBytes) {
    return PngReader(path).ReadPixels(maxBytes);
}

std::string ReadPngDescription(const std::string& path) { return PngReader(path).Description(); }

}  // namespace trovik
