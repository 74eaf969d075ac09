// SPDX-License-Identifier: Apache-2.0
#include "framework/journal/JournalContent.h"
#include "fuzz/MemoryFile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const trovik::MemoryFile file(bytes, size);
    for (const bool untilDamage : {false, true}) {
        file.Read([untilDamage](const std::string& path) {
            const trovik::JournalContent content = trovik::ReadJournal(path, untilDamage);
            for (const trovik::JournalStep& step : content.steps) trovik::SummaryOf(step).dump();
        });
    }
    return 0;
}
