// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MeshFiles.h"
#include "fuzz/ReaderFuzzer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    trovik::FuzzReader(bytes, size, trovik::ReadStl);
    return 0;
}
