// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/images/ImageFile.h"
#include "host/Image.h"

#include <list>
#include <memory>
#include <string>

namespace trovik {

/// A stamp: the pixels of an image file, converted on demand to the format that brushes read.
///
/// If one value per pixel is requested, it is the mean of the colour channels; if three are
/// requested, they are the colours. The number of channels in the file determines their meaning:
/// - 1: grey. If three values are requested, the grey value is the second one, which a vector stamp
///   uses as the height.
/// - 2: grey and alpha.
/// - 3: colour.
/// - 4: colour and alpha.
/// - more: the first three are the colours; the others are unused.
///
/// Integer alpha multiplies the colours, so that transparent pixels displace nothing. Float files
/// contain premultiplied colours, and their alpha is unused.
class TROVIK_API StampImage : public Image {
public:
    /// \param kind  the result of ImageKind.
    StampImage(FloatImage image, int kind);

    uint32_t Width() const override { return image.width; }
    uint32_t Height() const override { return image.height; }
    int ImageKind() const override { return kind; }
    /// Fills `buffer` with width * height * descriptor->channels floats, as stored in the file: no
    /// colour conversion, signs preserved. Channels: 1 or 3.
    void getTile(int x,
                 int y,
                 int width,
                 int height,
                 void* buffer,
                 const PixelDescriptor* descriptor) override;

    /// Replaces the pixels and increments the version.
    void Replace(FloatImage newImage);
    std::size_t Bytes() const { return image.pixels.capacity() * sizeof(float); }

private:
    FloatImage image;
    int kind;
};

/// Maximum size of one stamp as floats: 512 MiB, which is a grey stamp of 11585 x 11585 pixels. The
/// brush stores a second copy of the pixels.
inline constexpr std::size_t maxStampBytes = std::size_t{1} << 29;
/// Memory limit for stamps that no brush uses; beyond it, the least recently used are evicted.
inline constexpr std::size_t maxIdleStampBytes = std::size_t{1} << 29;

/// Returns whether the name identifies a vector displacement map, that is, whether it contains
/// ".vdm" or "_vdm" in upper or lower case.
TROVIK_API bool IsVectorStampName(const std::string& fileName);

/// A cache of stamps; the key is the file. A file is read again only if its size, modification time
/// or identity has changed. The new pixels then replace those of the cached image; its owners
/// detect the change by its version. Use it only on the host's main thread.
class TROVIK_API StampCache {
public:
    static StampCache& Instance();

    /// Returns the stamp of a file; never null. ImageKind is 1 if the file name identifies a vector
    /// displacement map, otherwise 0.
    /// \throw HostError with the file and the reason, like ReadImageFile; the cached image of the
    /// file is kept.
    std::shared_ptr<StampImage> Get(const std::string& path, std::size_t maxBytes = maxStampBytes);

    /// Returns the number of files read since the cache was created.
    uint64_t ReadCount() const { return reads; }
    /// Evicts stamps that only the cache uses, least recently used first, until the remaining ones
    /// fit within the limit.
    void DropIdle(std::size_t keepBytes);

private:
    /// Identifies the state of a file, so that a change or a different file with the same name is
    /// detected.
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

    /// Most recently used first.
    std::list<Entry> entries;
    uint64_t reads = 0;
};

}  // namespace trovik
