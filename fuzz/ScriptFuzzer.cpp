// SPDX-License-Identifier: Apache-2.0
#include "framework/script/PenStream.h"
#include "framework/script/ScriptDocument.h"
#include "fuzz/MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const trovik::MemoryFile file(bytes, size);
    file.Read([](const std::string& path) { trovik::ReadStrokeScript(path); });
    file.Read([](const std::string& path) {
        std::vector<trovik::JsonFault> faults;
        trovik::ReadStrokeScript(path, &faults);
    });
    file.Read([](const std::string& path) { trovik::ReadPenStream(path); });
    return 0;
}
