// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfAccessor.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace trovik {

/// A checked range of elements in the file.
struct GltfAccessors::Span {
    const unsigned char* first = nullptr;
    std::size_t stride = 0;
};

namespace {

constexpr std::size_t maxComponents = 4;

template <class Number>
Number Load(const unsigned char* bytes) {
    std::array<unsigned char, sizeof(Number)> ordered;
    std::memcpy(ordered.data(), bytes, sizeof(Number));
    if constexpr (std::endian::native != std::endian::little) {
        std::reverse(ordered.begin(), ordered.end());
    }
    return std::bit_cast<Number>(ordered);
}

template <class Whole>
float Share(const unsigned char* bytes, bool isNormalized) {
    const auto number = static_cast<float>(Load<Whole>(bytes));
    if (!isNormalized) {
        return number;
    }
    return std::max(number / static_cast<float>(std::numeric_limits<Whole>::max()), -1.0f);
}

/// Returns the size of a component; 0 for an invalid type.
std::size_t BytesOf(int type) {
    switch (type) {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return 1;
        case TINYGLTF_COMPONENT_TYPE_SHORT:
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return 2;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
        case TINYGLTF_COMPONENT_TYPE_FLOAT:
            return 4;
        default:
            return 0;
    }
}

float LoadFloat(int type, bool isNormalized, const unsigned char* bytes) {
    switch (type) {
        case TINYGLTF_COMPONENT_TYPE_BYTE:
            return Share<std::int8_t>(bytes, isNormalized);
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return Share<std::uint8_t>(bytes, isNormalized);
        case TINYGLTF_COMPONENT_TYPE_SHORT:
            return Share<std::int16_t>(bytes, isNormalized);
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return Share<std::uint16_t>(bytes, isNormalized);
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
            return Share<std::uint32_t>(bytes, isNormalized);
        default:
            return Load<float>(bytes);
    }
}

std::uint32_t LoadIndex(int type, const unsigned char* bytes) {
    switch (type) {
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
            return *bytes;
        case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
            return Load<std::uint16_t>(bytes);
        default:
            return Load<std::uint32_t>(bytes);
    }
}

bool IsIndexType(int type) {
    return type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE ||
           type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT ||
           type == TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT;
}

std::size_t ComponentsOf(int type) {
    switch (type) {
        case TINYGLTF_TYPE_SCALAR:
            return 1;
        case TINYGLTF_TYPE_VEC2:
            return 2;
        case TINYGLTF_TYPE_VEC3:
            return 3;
        case TINYGLTF_TYPE_VEC4:
            return 4;
        default:
            return 0;
    }
}

std::string Named(int accessor) { return "accessor " + std::to_string(accessor); }

}  // namespace

GltfAccessors::Span GltfAccessors::Bytes(int view,
                                         std::size_t offset,
                                         std::size_t count,
                                         std::size_t elementBytes,
                                         bool isStrided,
                                         const std::string& what,
                                         const GltfLocation& location) const {
    const tinygltf::Model& model = document.Model();
    const tinygltf::BufferView& from =
        model.bufferViews[location.Checked(view, model.bufferViews.size(), "buffer view")];
    const std::vector<unsigned char>& buffer =
        model.buffers[location.Checked(from.buffer, model.buffers.size(), "buffer")].data;
    const std::size_t stride = isStrided && from.byteStride != 0 ? from.byteStride : elementBytes;
    const bool viewFits =
        from.byteOffset <= buffer.size() && from.byteLength <= buffer.size() - from.byteOffset;
    // The order of these checks avoids overflow: the last element begins at (count - 1) * stride.
    const bool fits =
        viewFits && stride >= elementBytes && offset <= from.byteLength &&
        (count == 0 || (elementBytes <= from.byteLength - offset &&
                        count - 1 <= (from.byteLength - offset - elementBytes) / stride));
    if (!fits) {
        location.Refuse(what + ": its " + std::to_string(count) +
                        " elements extend past the end of buffer view " + std::to_string(view));
    }
    return {buffer.data() + from.byteOffset + offset, stride};
}

void GltfAccessors::ReadNumbers(int number,
                                std::size_t components,
                                std::optional<std::size_t> length,
                                const GltfLocation& location,
                                const Append& append,
                                const Replace& replace) const {
    const tinygltf::Model& model = document.Model();
    const tinygltf::Accessor& accessor =
        model.accessors[location.Checked(number, model.accessors.size(), "accessor")];
    const std::string what = Named(number);
    const std::size_t componentBytes = BytesOf(accessor.componentType);
    if (componentBytes == 0 || ComponentsOf(accessor.type) != components) {
        location.Refuse(what + " does not contain " + std::to_string(components) +
                        "-component vectors");
    }
    if (length && accessor.count != *length) {
        location.Refuse(what + " has " + std::to_string(accessor.count) + " elements instead of " +
                        std::to_string(*length));
    }
    if (!length && accessor.bufferView < 0) {
        location.Refuse(what + " has no buffer view");
    }
    const std::size_t elementBytes = components * componentBytes;
    std::array<float, maxComponents> values = {};
    const auto load = [&](const unsigned char* bytes) {
        for (std::size_t i = 0; i < components; ++i) {
            values[i] =
                LoadFloat(accessor.componentType, accessor.normalized, bytes + i * componentBytes);
            if (!std::isfinite(values[i])) {
                location.Refuse(what + " contains a non-finite number");
            }
        }
    };
    Span span;
    if (accessor.bufferView >= 0) {
        span = Bytes(accessor.bufferView,
                     accessor.byteOffset,
                     accessor.count,
                     elementBytes,
                     true,
                     what,
                     location);
    }
    for (std::size_t entry = 0; entry < accessor.count; ++entry) {
        if (span.first != nullptr) {
            load(span.first + entry * span.stride);
        }
        append(values.data());
    }
    if (!accessor.sparse.isSparse) {
        return;
    }
    if (accessor.sparse.count < 0 || !IsIndexType(accessor.sparse.indices.componentType) ||
        accessor.sparse.indices.byteOffset < 0 || accessor.sparse.values.byteOffset < 0) {
        location.Refuse(what + ": its sparse data is damaged");
    }
    const auto count = static_cast<std::size_t>(accessor.sparse.count);
    const int indexType = accessor.sparse.indices.componentType;
    const Span indices = Bytes(accessor.sparse.indices.bufferView,
                               static_cast<std::size_t>(accessor.sparse.indices.byteOffset),
                               count,
                               BytesOf(indexType),
                               false,
                               what + ", sparse indices",
                               location);
    const Span changes = Bytes(accessor.sparse.values.bufferView,
                               static_cast<std::size_t>(accessor.sparse.values.byteOffset),
                               count,
                               elementBytes,
                               false,
                               what + ", sparse values",
                               location);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t entry = LoadIndex(indexType, indices.first + i * indices.stride);
        if (entry >= accessor.count) {
            location.Refuse(what + ": its sparse data refers to element " + std::to_string(entry) +
                            " of " + std::to_string(accessor.count));
        }
        load(changes.first + i * changes.stride);
        replace(entry, values.data());
    }
}

std::vector<std::array<float, 4>> GltfAccessors::ReadColors(int accessor,
                                                            std::size_t length,
                                                            const GltfLocation& location,
                                                            bool& hasAlpha) const {
    const tinygltf::Model& model = document.Model();
    const std::size_t index = location.Checked(accessor, model.accessors.size(), "accessor");
    if (ComponentsOf(model.accessors[index].type) == 4) {
        hasAlpha = true;
        return Read<4>(accessor, length, location);
    }
    std::vector<std::array<float, 4>> colors;
    for (const std::array<float, 3>& color : Read<3>(accessor, length, location)) {
        colors.push_back({color[0], color[1], color[2], 1.0f});
    }
    return colors;
}

std::vector<std::uint32_t> GltfAccessors::ReadIndices(int number,
                                                      std::size_t limit,
                                                      const GltfLocation& location) const {
    const tinygltf::Model& model = document.Model();
    const tinygltf::Accessor& accessor =
        model.accessors[location.Checked(number, model.accessors.size(), "accessor")];
    const std::string what = Named(number);
    if (!IsIndexType(accessor.componentType) || ComponentsOf(accessor.type) != 1 ||
        accessor.sparse.isSparse || accessor.bufferView < 0) {
        location.Refuse(what + " is not a list of whole numbers");
    }
    const Span span = Bytes(accessor.bufferView,
                            accessor.byteOffset,
                            accessor.count,
                            BytesOf(accessor.componentType),
                            true,
                            what,
                            location);
    std::vector<std::uint32_t> indices;
    indices.reserve(accessor.count);
    for (std::size_t i = 0; i < accessor.count; ++i) {
        indices.push_back(LoadIndex(accessor.componentType, span.first + i * span.stride));
        if (indices.back() >= limit) {
            location.Refuse(what + " refers to vertex " + std::to_string(indices.back()) + " of " +
                            std::to_string(limit));
        }
    }
    return indices;
}

}  // namespace trovik
