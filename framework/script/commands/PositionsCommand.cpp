// SPDX-License-Identifier: Apache-2.0

/// \file The command "setPositions": new positions for all vertices of the current level.
#include "framework/filters/PositionEdit.h"
#include "framework/io/Base64.h"
#include "framework/script/Command.h"

#include <cstring>

namespace trovik {

namespace {

struct PositionsParameters {
    /// Mesh-local positions, or base64 of three little-endian floats per vertex.
    std::variant<std::string, std::vector<Vector>> values;
    std::optional<std::string> label;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("values", values);
        visit("label", label);
    }
};

std::vector<Vector> DecodedPositions(const std::string& text) {
    const std::vector<uint8_t> bytes = AtField("/values", [&] { return DecodeBase64(text); });
    constexpr std::size_t bytesPerVertex = 3 * sizeof(float);
    if (bytes.size() % bytesPerVertex != 0)
        throw FieldFault("/values", "expected three 32-bit floats per vertex");
    std::vector<Vector> positions(bytes.size() / bytesPerVertex);
    for (std::size_t i = 0; i < positions.size(); ++i) {
        float p[3];
        std::memcpy(p, bytes.data() + i * bytesPerVertex, bytesPerVertex);
        positions[i] = {p[0], p[1], p[2]};
    }
    return positions;
}

void SetPositions(CommandContext& context, const PositionsParameters& parameters) {
    const auto* text = std::get_if<std::string>(&parameters.values);
    std::vector<Vector> positions = text != nullptr
                                        ? DecodedPositions(*text)
                                        : std::get<std::vector<Vector>>(parameters.values);
    AtField("/values", [&] {
        const PositionEdit edit =
            GivenPositions(std::move(positions), parameters.label.value_or("Set positions"));
        if (context.document.EditPositions(edit, context.Job()) == 0)
            context.Warn("no vertex has moved");
    });
}

void CheckPositions(CommandContext&, const PositionsParameters& parameters) {
    if (const auto* text = std::get_if<std::string>(&parameters.values)) DecodedPositions(*text);
}

const CommandRegistration<PositionsParameters> setPositions({.name = "setPositions"},
                                                            SetPositions,
                                                            CheckPositions);

}  // namespace

}  // namespace trovik
