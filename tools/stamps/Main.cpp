// SPDX-License-Identifier: Apache-2.0

/// \file
/// `trovik-stamps FOLDER` generates the images of the installed stamps in FOLDER.
#include "framework/errors/HostError.h"
#include "tools/stamps/ShippedStamps.h"

#include <cstdio>
#include <exception>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: trovik-stamps FOLDER\n");
        return 2;
    }
    try {
        for (const auto& stamp : trovik::stamps::ShippedStamps()) {
            trovik::stamps::WriteStamp(stamp, argv[1]);
            std::printf("%s/%s\n", argv[1], stamp.path);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "trovik-stamps: %s\n", error.what());
        return 1;
    }
    return 0;
}
