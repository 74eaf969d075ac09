// SPDX-License-Identifier: Apache-2.0
#include "framework/remesh/voxels/VoxelField.h"

#include "framework/modules/Module.h"

namespace trovik {

namespace {

/// Address space that loading the module and the libraries that it links needs.
constexpr uint64_t voxelLibraryBytes = uint64_t{128} << 20;

}  // namespace

const VoxelLibrary& LoadedVoxelLibrary() {
    static const auto& library = ModuleInterface<VoxelLibrary>(
        {"trovik-openvdb.so", "remeshing with voxels", voxelLibraryBytes});
    return library;
}

}  // namespace trovik
