// SPDX-License-Identifier: Apache-2.0
#include "framework/memory/MemoryAccount.h"
#include "framework/scene/SceneFile.h"
#include "fuzz/MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const trovik::MemoryFile file(bytes, size);
    file.Read([](const std::string& path) {
        const trovik::LoadedScene scene = trovik::LoadScene(path, nullptr);
        // A scene that was read must be usable.
        for (std::uint32_t level = 0; level < scene.geometry->LevelCount(); ++level)
            scene.geometry->Level(level)->ComputeNormals();
    });
    return 0;
}
