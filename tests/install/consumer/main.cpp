// SPDX-License-Identifier: Apache-2.0

#include "DetailBrush.h"
#include "framework/errors/HostError.h"
#include "host/Mesh.h"

#include <cstdio>

namespace {

/// Uses a record and the vector arithmetic of the contract, and a symbol of the library.
void RefuseMisplacedVertex() {
    const trovik::Vector position(1.0F, 2.0F, 3.0F);
    if (position.x + position.y == position.z) {
        throw trovik::HostError("ship.obj, line 12: no such vertex");
    }
}

}  // namespace

int main() {
    try {
        RefuseMisplacedVertex();
    } catch (const std::runtime_error& error) {
        std::printf("caught: %s\n", error.what());
        return 0;
    }
    std::puts("nothing was thrown");
    return 1;
}
