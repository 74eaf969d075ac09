// SPDX-License-Identifier: Apache-2.0

/// \file
/// The loader below the reader of glTF files, compiled here to be instrumented by the sanitizers;
/// the packaged library is not.
#define TINYGLTF_IMPLEMENTATION
#include <tiny_gltf.h>
