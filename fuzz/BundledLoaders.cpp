// SPDX-License-Identifier: Apache-2.0

/// \file
/// The loaders below the readers, compiled here, so that the sanitizers see into them; the packaged
/// libraries are not instrumented.
#define TINYGLTF_IMPLEMENTATION
#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include <tiny_gltf.h>
