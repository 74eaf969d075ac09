// SPDX-License-Identifier: Apache-2.0

/// \file
/// Compiles the third-party loaders that the readers use with sanitizers; the packaged
/// libraries are not instrumented.
#define TINYGLTF_IMPLEMENTATION
#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include <tiny_gltf.h>
