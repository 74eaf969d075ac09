// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

/// \file The version of the contract between the host and its plug-ins: the layouts, the order of
/// virtual functions and the call sequences in the headers of this folder.
namespace trovik {

/// Increased by every change after which a plug-in must be compiled again.
inline constexpr uint32_t contractVersion = 1;

/// An ELF note (System V ABI, "Note Section") that contains the contract version of a plug-in. The
/// host reads it from the file before it runs any code of the plug-in.
struct ContractNote {
    uint32_t nameSize = sizeof(name);
    uint32_t descriptionSize = sizeof(version);
    uint32_t type = noteType;
    char name[8] = "Trovik";
    uint32_t version = contractVersion;

    static constexpr uint32_t noteType = 1;
};
static_assert(sizeof(ContractNote) == 24);

}  // namespace trovik

/// Records in a plug-in the contract version against which it is compiled. Use it in one source
/// file, outside of any function. A plug-in without the note counts as version 1.
#define TROVIK_PLUGIN_CONTRACT               \
    [[gnu::used,                             \
      gnu::section(".note.trovik.contract"), \
      gnu::aligned(4)]] static const trovik::ContractNote trovikContractNote{};
