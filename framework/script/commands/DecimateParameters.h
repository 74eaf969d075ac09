// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/remesh/Decimation.h"
#include "framework/script/CommandFields.h"
#include "framework/script/FieldFault.h"

#include <string>

namespace trovik {

/// The fields of the command "decimate", which the command "export" also has.
struct DecimateParameters {
    std::optional<uint32_t> faces;
    std::optional<float> ratio;
    std::optional<float> error;
    bool keepBorders = true;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("faces", faces);
        visit("ratio", ratio);
        visit("error", error);
        visit("keepBorders", keepBorders);
    }

    /// \param pointer  JSON pointer of the object with these fields.
    /// \throw FieldFault if they contradict each other, or none is given.
    Decimation Settings(const std::string& pointer) const {
        if (!faces && !ratio && !error)
            throw FieldFault(pointer, "needs \"faces\", \"ratio\" or \"error\"");
        if (faces && ratio)
            throw FieldFault(pointer + "/ratio", "\"faces\" and \"ratio\" exclude each other");
        return {faces, error, keepBorders, ratio};
    }
};

}  // namespace trovik
