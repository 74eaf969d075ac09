// SPDX-License-Identifier: Apache-2.0

/// \file
/// The "applicationData" command, which stores an entry of ApplicationData in the scene.
#include "framework/scene/ApplicationChunk.h"
#include "framework/script/Command.h"

namespace trovik {

namespace {

struct ApplicationDataParameters {
    std::string name;
    std::optional<std::string> text;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("name", name);
        visit("text", text);
    }
};

/// \return the data with the changed entry. \throw HostError if it exceeds the limits.
ApplicationData Changed(ApplicationData data, const ApplicationDataParameters& parameters) {
    if (parameters.text)
        data[parameters.name].assign(parameters.text->begin(), parameters.text->end());
    else
        data.erase(parameters.name);
    CheckApplicationData(data);
    return data;
}

void Store(CommandContext& context, const ApplicationDataParameters& parameters) {
    ApplicationData& data = context.document.Settings().applicationData;
    AtField("", [&] { data = Changed(data, parameters); });
}

void Check(CommandContext&, const ApplicationDataParameters& parameters) {
    AtField("", [&] { Changed({}, parameters); });
}

const CommandRegistration<ApplicationDataParameters> applicationData(
    {.name = "applicationData", .duringStroke = DuringStroke::Allowed}, Store, Check);

}  // namespace

}  // namespace trovik
