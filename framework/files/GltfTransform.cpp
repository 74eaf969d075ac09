// SPDX-License-Identifier: Apache-2.0
#include "framework/files/GltfTransform.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace trovik {

GltfTransform Product(const GltfTransform& a, const GltfTransform& b) {
    GltfTransform product = {};
    for (std::size_t column = 0; column < 4; ++column) {
        for (std::size_t row = 0; row < 4; ++row) {
            for (std::size_t k = 0; k < 4; ++k) {
                product[column * 4 + row] += a[k * 4 + row] * b[column * 4 + k];
            }
        }
    }
    return product;
}

double Determinant(const GltfTransform& m) {
    return m[0] * (m[5] * m[10] - m[9] * m[6]) - m[4] * (m[1] * m[10] - m[9] * m[2]) +
           m[8] * (m[1] * m[6] - m[5] * m[2]);
}

std::array<float, 3> Moved(const GltfTransform& m, const std::array<float, 3>& p) {
    if (m == gltfIdentity) {
        return p;
    }
    std::array<float, 3> moved;
    for (std::size_t row = 0; row < 3; ++row) {
        moved[row] = static_cast<float>(m[row] * static_cast<double>(p[0]) +
                                        m[4 + row] * static_cast<double>(p[1]) +
                                        m[8 + row] * static_cast<double>(p[2]) + m[12 + row]);
    }
    return moved;
}

std::array<float, 3> Turned(const GltfTransform& m, double sign, const std::array<float, 3>& n) {
    if (m == gltfIdentity) {
        return n;
    }
    std::array<double, 3> turned = {};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            const std::size_t r1 = (row + 1) % 3;
            const std::size_t r2 = (row + 2) % 3;
            const std::size_t c1 = (column + 1) % 3;
            const std::size_t c2 = (column + 2) % 3;
            const double cofactor =
                m[c1 * 4 + r1] * m[c2 * 4 + r2] - m[c2 * 4 + r1] * m[c1 * 4 + r2];
            turned[row] += cofactor * static_cast<double>(n[column]);
        }
    }
    const double length =
        std::sqrt(turned[0] * turned[0] + turned[1] * turned[1] + turned[2] * turned[2]);
    const double factor = length > 0.0 ? sign / length : 0.0;
    return {static_cast<float>(turned[0] * factor),
            static_cast<float>(turned[1] * factor),
            static_cast<float>(turned[2] * factor)};
}

GltfTransform LocalTransform(const tinygltf::Node& node, const GltfLocation& location) {
    GltfTransform m = gltfIdentity;
    if (!node.matrix.empty()) {
        if (node.matrix.size() != 16) {
            location.Refuse("its matrix has " + std::to_string(node.matrix.size()) + " numbers");
        }
        std::copy(node.matrix.begin(), node.matrix.end(), m.begin());
    } else {
        const auto part =
            [&location](const std::vector<double>& numbers, std::size_t count, const char* what) {
                if (!numbers.empty() && numbers.size() != count) {
                    location.Refuse(std::string("its ") + what + " has " +
                                    std::to_string(numbers.size()) + " numbers");
                }
                return !numbers.empty();
            };
        if (part(node.rotation, 4, "rotation")) {
            const double x = node.rotation[0];
            const double y = node.rotation[1];
            const double z = node.rotation[2];
            const double w = node.rotation[3];
            m = {1 - 2 * (y * y + z * z),
                 2 * (x * y + z * w),
                 2 * (x * z - y * w),
                 0,
                 2 * (x * y - z * w),
                 1 - 2 * (x * x + z * z),
                 2 * (y * z + x * w),
                 0,
                 2 * (x * z + y * w),
                 2 * (y * z - x * w),
                 1 - 2 * (x * x + y * y),
                 0,
                 0,
                 0,
                 0,
                 1};
        }
        if (part(node.scale, 3, "scale")) {
            for (std::size_t column = 0; column < 3; ++column) {
                for (std::size_t row = 0; row < 3; ++row) {
                    m[column * 4 + row] *= node.scale[column];
                }
            }
        }
        if (part(node.translation, 3, "translation")) {
            std::copy(node.translation.begin(), node.translation.end(), m.begin() + 12);
        }
    }
    if (!std::all_of(m.begin(), m.end(), [](double number) { return std::isfinite(number); })) {
        location.Refuse("its transform is not finite");
    }
    return m;
}

}  // namespace trovik
