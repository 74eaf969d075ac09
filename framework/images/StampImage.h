// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "host/Image.h"

#include <list>
#include <memory>
#include <string>

namespace trovik {

/// A stamp: pixels of a file as a brush reads them.
///
/// One value per pixel is the mean of the colour channels; three are the colours. Channels:
///   1  grey; as three values it is the second one, which a vector stamp takes for the height
///   2  grey and alpha
///   3  colour
///   4  colour and alpha
///   more: the first three are the colours, the others unused
/// Alpha of whole numbers multiplies the colours, so that what cannot be seen pushes nothing; files
/// of floats hold colours that are multiplied already, and their alpha is unused.
class TROVIK_API StampImage : public Image {
public:
    /// \param kind  what ImageKind answers.
    StampImage(FloatImage image, int kind);

    uint32_t Width() const override { return image.width; }
    uint32_t Height() const override { return image.height; }
    int ImageKind() const override { return kind; }
    /// `buffer` takes width * height * descriptor->channels floats, as the file has them: no colour
    /// transform, signs kept. Channels: 1 or 3.
    void getTile(int x,
                 int y,
                 int width,
                 int height,
                 void* buffer,
                 const PixelDescriptor* descriptor) override;

    /// Other pixels in the place of these; the version moves on.
    void Replace(FloatImage newImage);
    std::size_t Bytes() const { return image.pixels.capacity() * sizeof(float); }

private:
    FloatImage image;
    int kind;
};

/// Most memory that one stamp may take as floats, 512 MiB: a grey one of 11585 x 11585 pixels. The
/// brush holds its pixels a second time.
inline constexpr std::size_t maxStampBytes = std::size_t{1} << 29;
/// Most memory that stamps which no brush uses may take before the oldest are dropped.
inline constexpr std::size_t maxIdleStampBytes = std::size_t{1} << 29;

/// True for the names of vector displacement maps: ".vdm" or "_vdm" anywhere, in any case.
TROVIK_API bool IsVectorStampName(const std::string& fileName);

/// Stamps by file. A file is read once and again only when its size, time or identity has changed;
/// the new pixels then go into the same image, so that whoever holds it sees its version move.
/// Used on the host's main thread only.
class TROVIK_API StampCache {
public:
    static StampCache& Instance();

    /// Never null. An image of a vector name answers kind 1, all others kind 0.
    /// \throw HostError naming the file and the reason, as ReadImageFile does; the limit is
    /// maxStampBytes unless told otherwise. What the cache held of the file stays.
    std::shared_ptr<StampImage> Get(const std::string& path, std::size_t maxBytes = maxStampBytes);

    /// Files read since the program began.
    uint64_t ReadCount() const { return reads; }
    /// Drops stamps that nobody else holds, the longest unused first, until the rest take no more.
    void DropIdle(std::size_t keepBytes);

private:
    /// What tells a file from the one that had its name before.
    struct FileState {
        uint64_t device = 0;
        uint64_t inode = 0;
        int64_t size = 0;
        int64_t seconds = 0;
        int64_t nanoseconds = 0;
        bool operator==(const FileState&) const = default;
    };
    struct Entry {
        std::string path;
        FileState state;
        std::shared_ptr<StampImage> image;
    };
    static FileState StateOf(const std::string& path);

    /// The most recently used first.
    std::list<Entry> entries;
    uint64_t reads = 0;
};

}  // namespace trovik
