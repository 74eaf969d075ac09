// SPDX-License-Identifier: Apache-2.0
#include "framework/history/PackedArrays.h"

#include "framework/errors/HostError.h"
#include "host/HWVector.h"

#include <lz4.h>
#include <zstd.h>

#include <algorithm>
#include <cstring>

namespace trovik {

namespace {

constexpr std::size_t pieceBytes = std::size_t{256} << 10;
constexpr int tightLevel = 3;

[[noreturn]] void Refuse() { throw HostError("the compressed data of an undo step is damaged"); }

std::size_t PieceElements(std::size_t elementBytes) {
    return std::max<std::size_t>(1, pieceBytes / elementBytes);
}

void Shuffle(const uint8_t* from, std::size_t elementBytes, std::size_t count, uint8_t* to) {
    for (std::size_t rank = 0; rank < elementBytes; ++rank)
        for (std::size_t i = 0; i < count; ++i) *to++ = from[i * elementBytes + rank];
}

/// Processes four byte ranks at a time: bytes are combined into words in registers, so that each
/// word takes one store instead of four.
void UnshuffleWord(const uint8_t* from, std::size_t elementBytes, std::size_t count, uint8_t* to) {
    constexpr std::size_t lanes = 16;
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto rank = [&](std::size_t number) {
            return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + number * count + i));
        };
        const __m128i low = _mm_unpacklo_epi8(rank(0), rank(1));
        const __m128i high = _mm_unpackhi_epi8(rank(0), rank(1));
        const __m128i lowAbove = _mm_unpacklo_epi8(rank(2), rank(3));
        const __m128i highAbove = _mm_unpackhi_epi8(rank(2), rank(3));
        alignas(16) uint32_t words[lanes];
        auto* store = reinterpret_cast<__m128i*>(words);
        _mm_store_si128(store, _mm_unpacklo_epi16(low, lowAbove));
        _mm_store_si128(store + 1, _mm_unpackhi_epi16(low, lowAbove));
        _mm_store_si128(store + 2, _mm_unpacklo_epi16(high, highAbove));
        _mm_store_si128(store + 3, _mm_unpackhi_epi16(high, highAbove));
        for (std::size_t lane = 0; lane < lanes; ++lane)
            std::memcpy(to + (i + lane) * elementBytes, &words[lane], sizeof words[lane]);
    }
    for (; i < count; ++i)
        for (std::size_t rank = 0; rank < 4; ++rank)
            to[i * elementBytes + rank] = from[rank * count + i];
}

void Unshuffle(const uint8_t* from, std::size_t elementBytes, std::size_t count, uint8_t* to) {
    std::size_t rank = 0;
    for (; rank + 4 <= elementBytes; rank += 4)
        UnshuffleWord(from + rank * count, elementBytes, count, to + rank);
    from += rank * count;
    for (; rank < elementBytes; ++rank)
        for (std::size_t i = 0; i < count; ++i) to[i * elementBytes + rank] = *from++;
}

template <typename T>
void Put(std::vector<uint8_t>& bytes, T value) {
    const auto* raw = reinterpret_cast<const uint8_t*>(&value);
    bytes.insert(bytes.end(), raw, raw + sizeof value);
}

/// Compresses pieces; keeps its buffers, so that they are allocated only once.
class Press {
public:
    explicit Press(PackMethod ofMethod) : method(ofMethod) {}
    ~Press() { ZSTD_freeCCtx(context); }
    Press(const Press&) = delete;
    Press& operator=(const Press&) = delete;

    void Put(const uint8_t* piece, std::size_t size, std::vector<uint8_t>& bytes) {
        const std::size_t packed = Compress(piece, size);
        const bool shrank = packed != 0 && packed < size;
        const uint8_t* from = shrank ? room.data() : piece;
        const std::size_t length = shrank ? packed : size;
        trovik::Put(bytes, static_cast<uint32_t>(length));
        bytes.insert(bytes.end(), from, from + length);
    }

private:
    /// \return the packed length, or 0 if the piece does not shrink.
    std::size_t Compress(const uint8_t* piece, std::size_t size) {
        if (method == PackMethod::Quick) {
            room.resize(static_cast<std::size_t>(LZ4_compressBound(static_cast<int>(size))));
            const int length = LZ4_compress_default(reinterpret_cast<const char*>(piece),
                                                    reinterpret_cast<char*>(room.data()),
                                                    static_cast<int>(size),
                                                    static_cast<int>(room.size()));
            return length <= 0 ? 0 : static_cast<std::size_t>(length);
        }
        room.resize(ZSTD_compressBound(size));
        if (context == nullptr) context = ZSTD_createCCtx();
        if (context == nullptr) return 0;
        const std::size_t length =
            ZSTD_compressCCtx(context, room.data(), room.size(), piece, size, tightLevel);
        return ZSTD_isError(length) != 0 ? 0 : length;
    }

    PackMethod method;
    ZSTD_CCtx* context = nullptr;
    std::vector<uint8_t> room;
};

/// Reads packed bytes and validates every length in them.
class PackedReader {
public:
    PackedReader(const std::vector<uint8_t>& packed, PackMethod ofMethod)
        : next(packed.data()), end(packed.data() + packed.size()), method(ofMethod) {}

    bool AtEnd() const { return next == end; }

    template <typename T>
    T Take() {
        T value;
        if (static_cast<std::size_t>(end - next) < sizeof value) Refuse();
        std::memcpy(&value, next, sizeof value);
        next += sizeof value;
        return value;
    }

    /// Returns the next piece, which has `size` bytes when unpacked; valid until the next call.
    const uint8_t* Piece(std::size_t size) {
        const auto length = Take<uint32_t>();
        if (length > size || length > static_cast<std::size_t>(end - next)) Refuse();
        const uint8_t* packed = next;
        next += length;
        if (length == size) return packed;
        room.resize(size);
        if (method == PackMethod::Quick) {
            const int got = LZ4_decompress_safe(reinterpret_cast<const char*>(packed),
                                                reinterpret_cast<char*>(room.data()),
                                                static_cast<int>(length),
                                                static_cast<int>(size));
            if (got < 0 || static_cast<std::size_t>(got) != size) Refuse();
        } else if (ZSTD_decompress(room.data(), size, packed, length) != size) {
            Refuse();
        }
        return room.data();
    }

private:
    const uint8_t* next;
    const uint8_t* end;
    PackMethod method;
    std::vector<uint8_t> room;
};

}  // namespace

std::vector<uint8_t> PackArrays(const std::vector<StepArray>& arrays, PackMethod method) {
    std::vector<uint8_t> bytes;
    std::vector<uint8_t> shuffled;
    Press press(method);
    for (const StepArray& array : arrays) {
        const std::size_t size = array.ElementBytes();
        const std::size_t most = PieceElements(size);
        Put(bytes, static_cast<uint32_t>(size));
        Put(bytes, static_cast<uint64_t>(array.Count()));
        const auto* data = static_cast<const uint8_t*>(array.Data());
        for (std::size_t done = 0; done < array.Count();) {
            const std::size_t count = std::min(most, array.Count() - done);
            shuffled.resize(count * size);
            Shuffle(data + done * size, size, count, shuffled.data());
            press.Put(shuffled.data(), shuffled.size(), bytes);
            done += count;
        }
    }
    bytes.shrink_to_fit();
    return bytes;
}

void UnpackArrays(const std::vector<uint8_t>& packed,
                  PackMethod method,
                  const std::vector<StepArray>& arrays) {
    PackedReader reader(packed, method);
    try {
        for (const StepArray& array : arrays) {
            const std::size_t size = array.ElementBytes();
            if (reader.Take<uint32_t>() != size) Refuse();
            const auto count = reader.Take<uint64_t>();
            // Packing a piece of 256 KiB gives at least one byte, even if all are zero. This limits
            // the allocation that a corrupt count can cause.
            if (count / PieceElements(size) > packed.size()) Refuse();
            array.Resize(static_cast<std::size_t>(count));
            auto* data = static_cast<uint8_t*>(array.Data());
            for (std::size_t done = 0; done < count;) {
                const std::size_t part =
                    std::min(PieceElements(size), static_cast<std::size_t>(count) - done);
                Unshuffle(reader.Piece(part * size), size, part, data + done * size);
                done += part;
            }
        }
        if (!reader.AtEnd()) Refuse();
    } catch (...) {
        for (const StepArray& array : arrays) array.Resize(0);
        throw;
    }
}

std::vector<uint8_t> Repack(const std::vector<uint8_t>& packed, PackMethod from, PackMethod to) {
    std::vector<uint8_t> bytes;
    PackedReader reader(packed, from);
    Press press(to);
    while (!reader.AtEnd()) {
        const auto size = reader.Take<uint32_t>();
        const auto count = reader.Take<uint64_t>();
        if (size == 0 || size > pieceBytes) Refuse();
        Put(bytes, size);
        Put(bytes, count);
        for (uint64_t done = 0; done < count;) {
            const uint64_t part = std::min<uint64_t>(PieceElements(size), count - done);
            const std::size_t length = static_cast<std::size_t>(part) * size;
            press.Put(reader.Piece(length), length, bytes);
            done += part;
        }
    }
    bytes.shrink_to_fit();
    return bytes;
}

}  // namespace trovik
