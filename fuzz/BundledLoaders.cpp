// SPDX-License-Identifier: Apache-2.0

/// \file
/// Compiles the third-party loader of the glTF reader with sanitizers, because the packaged library
/// is not instrumented.
#define TINYGLTF_IMPLEMENTATION
#include <tiny_gltf.h>
