// SPDX-License-Identifier: Apache-2.0

#include "DetailBrush.h"
#include "framework/errors/HostError.h"
#include "framework/images/ImageFile.h"
#include "framework/render/RenderImage.h"
#include "host/Mesh.h"

#include <cstdio>

namespace {

/// Uses a record type and the vector arithmetic of the contract, and a symbol of the library.
void RefuseMisplacedVertex() {
    const trovik::Vector position(1.0F, 2.0F, 3.0F);
    if (position.x + position.y == position.z) {
        throw trovik::HostError("ship.obj, line 12: no such vertex");
    }
}

/// Both need modules, which the library finds regardless of where the executable is.
void RenderAndWrite() {
    trovik::RenderOptions options;
    options.width = 8;
    options.height = 6;
    const trovik::RenderImage picture = trovik::RenderOnce({}, {}, options);
    trovik::WriteImageFile("consumer.png", picture.rgb.data(), 8, 6, 3);
    const trovik::FloatImage image = trovik::ReadImageFile("consumer.png");
    std::printf("image: %u x %u x %u\n", image.width, image.height, image.channels);
}

}  // namespace

int main() {
    try {
        RenderAndWrite();
        RefuseMisplacedVertex();
    } catch (const std::runtime_error& error) {
        std::printf("caught: %s\n", error.what());
        return 0;
    }
    std::puts("nothing was thrown");
    return 1;
}
