// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "HelpTexts.h"

#include <cstdio>
#include <memory>

namespace trovik {

namespace {

std::string HelpOf(const CLI::App& program, const std::string& name) {
    // help() would return the help of the current command instead.
    if (name.empty())
        return program.get_formatter()->make_help(
            &program, program.get_name(), CLI::AppFormatMode::Normal);
    const auto verbs =
        program.get_subcommands([&name](const CLI::App* verb) { return verb->get_name() == name; });
    if (verbs.empty()) throw CLI::ValidationError(UnknownCommand(program, name));
    return verbs.front()->help(program.get_name());
}

}  // namespace

void AddHelpCommand(CLI::App& program) {
    auto name = std::make_shared<std::string>();
    CLI::App* verb =
        program.add_subcommand("help", "Prints the help of a command, or the list of commands");
    std::string names;
    for (const CLI::App* other : program.get_subcommands([](CLI::App*) { return true; }))
        names += (names.empty() ? "" : ",") + other->get_name();
    // Shell completion offers the names between the braces.
    verb->add_option("command", *name, "Command to describe")->type_name("{" + names + "}");
    verb->callback([name, &program] { std::printf("%s", HelpOf(program, *name).c_str()); });
}

}  // namespace trovik
