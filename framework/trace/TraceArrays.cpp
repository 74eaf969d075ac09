// SPDX-License-Identifier: Apache-2.0
#include "framework/trace/TraceArrays.h"

#include "framework/trace/ChangeHash.h"
#include "framework/trace/NpyFile.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <string_view>

namespace trovik {

namespace {

/// 32-bit floating point per channel.
constexpr uint32_t floatFormat = 3;
constexpr uint32_t floatDepth = 5;

/// Identifies content by two different hashes and the header, which contains the shape. Keeping
/// stamps for comparison would take too much memory.
std::string Fingerprint(const std::string& header, std::string_view bytes) {
    return header + std::to_string(ChangeHash(bytes)) + "/" +
           std::to_string(std::hash<std::string_view>()(bytes));
}

}  // namespace

TraceArrays::TraceArrays(std::string arrayFolder) : folder(std::move(arrayFolder)) {}

std::string TraceArrays::Put(const char* kind,
                             const std::vector<uint64_t>& shape,
                             const float* values) {
    std::size_t sizeBytes = sizeof(float);
    for (const uint64_t extent : shape) sizeBytes *= extent;
    const std::string_view bytes(reinterpret_cast<const char*>(values), sizeBytes);
    std::string& file = fileOfContent[Fingerprint(NpyHeader(npyFloat32, shape), bytes)];
    if (file.empty()) {
        char name[64];
        std::snprintf(name, sizeof name, "%s-%04u.npy", kind, ++countOfKind[kind]);
        WriteNpyFile(folder + "/" + name, npyFloat32, shape, values, sizeBytes);
        file = name;
    }
    return file;
}

std::string TraceArrays::Falloff(const Store<float>& samples) {
    return Put("falloff", {samples.fill}, samples.array);
}

std::string TraceArrays::Pixels(Image& image, const QString& name, uint8_t channels) {
    const PixelsRead read{&image, name, image.Version(), image.Width(), image.Height(), channels};
    if (read == lastRead) return lastFile;
    std::vector<float> pixels(static_cast<std::size_t>(read.width) * read.height * channels);
    const PixelDescriptor descriptor{channels, floatFormat, floatDepth, 0};
    image.getTile(0,
                  0,
                  static_cast<int>(read.width),
                  static_cast<int>(read.height),
                  pixels.data(),
                  &descriptor);
    lastFile = Put("stamp", {read.height, read.width, channels}, pixels.data());
    lastRead = read;
    return lastFile;
}

unsigned TraceArrays::ImageNumber(const Image* image) {
    const auto found = std::find(images.begin(), images.end(), image);
    const auto number = static_cast<unsigned>(found - images.begin());
    if (found == images.end()) images.push_back(image);
    return number;
}

}  // namespace trovik
