// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/CommandContext.h"
#include "framework/script/CommandFields.h"
#include "framework/script/FieldFault.h"

#include <functional>
#include <string>
#include <vector>

namespace trovik {

/// Whether a command can run while a stroke is open.
enum class DuringStroke { Refused, Allowed };

/// How a command changes the position in the undo history.
enum class HistoryUse { None, Undo, Redo };

/// A file that a command reads. The journal stores its full path.
struct CommandInput {
    enum Recorded {
        /// The journal records the content before the command runs.
        BeforeCommand,
        /// Like BeforeCommand, unless the same run has written the file; in that case recovery
        /// writes it again.
        UnlessWritten,
        /// The journal records the content when a stroke uses the file.
        WhenUsed,
        /// The journal records the state of the scene after the command, because the file may be
        /// written again, by this run or by another program.
        AsSnapshot
    };
    /// JSON pointer within the parameters; empty for the parameters themselves. The parameter may
    /// be missing.
    const char* pointer;
    Recorded recorded = BeforeCommand;
};

/// The properties of a command that scripts, the journal and interactive clients need.
struct CommandTraits {
    /// The field of a step that contains the parameters.
    const char* name;
    DuringStroke duringStroke = DuringStroke::Refused;
    /// False for commands that change neither the sculpture nor settings.
    bool isJournaled = true;
    bool writesFiles = false;
    /// Whether the command calls the brush. A trace ends with the last such command.
    bool callsBrush = false;
    /// Whether the command runs before the other commands of its step.
    bool isFirst = false;
    HistoryUse history = HistoryUse::None;
    std::vector<CommandInput> inputs = {};
    /// The name in traces; null if it is the same as `name`. It can differ because the trace format
    /// never changes.
    const char* traceName = nullptr;
};

/// A command with its parameters as JSON: one row of the command table.
struct CommandEntry {
    CommandTraits traits;
    /// Runs the command. \throw HostError.
    std::function<void(CommandContext&, const FieldReader& parameters)> run;
    /// Checks parameters and files without changing the sculpture. Calls `report` once for each
    /// part of the check that can fail; each exception reports one error.
    using Report = std::function<void(const std::function<void()>& check)>;
    std::function<void(CommandContext&, const FieldReader& parameters, const Report& report)> check;
    /// Called for every step of a script before the first one runs; may be empty.
    std::function<void(CommandContext&, const FieldReader& parameters)> prepare;
    /// Reads the parameters and returns them in canonical form.
    std::function<nlohmann::json(const FieldReader& parameters)> rewrite;
    /// Returns the alternatives that the parameters accept; see FieldValue.
    std::function<nlohmann::json()> describe;
};

/// All commands, sorted by name; those that run before the other commands of their step come first.
TROVIK_API const std::vector<CommandEntry>& Commands();
/// \return null for an unknown name.
TROVIK_API const CommandEntry* FindCommand(const std::string& name);

/// Registers a command. Define a constant of this type in the command's source file:
///
///     const CommandRegistration<int> undo({.name = "undo", .history = HistoryUse::Undo}, Undo);
///
/// `Parameters` is a type that FieldValue supports.
template <typename Parameters>
class CommandRegistration {
public:
    using Function = void (*)(CommandContext& context, const Parameters& parameters);

    /// \param run  executes the command on the context's document. Errors in parameters are
    /// reported as FieldFault.
    /// \param check  checks everything that does not require sculpting: names, files, conflicts
    /// between fields; null if reading the parameters is sufficient.
    /// \param prepare  see CommandEntry.
    CommandRegistration(CommandTraits traits,
                        Function run,
                        Function check = nullptr,
                        Function prepare = nullptr);

    /// Registers a command with a check that reports several errors.
    CommandRegistration(CommandTraits traits,
                        Function run,
                        void (*check)(CommandContext& context,
                                      const FieldReader& parameters,
                                      const CommandEntry::Report& report));
};

/// Adds a row to the command table. Called while the library is being loaded.
void RegisterCommand(CommandEntry entry);

namespace commands {

template <typename Parameters>
auto WithParameters(void (*function)(CommandContext&, const Parameters&)) {
    return [function](CommandContext& context, const FieldReader& from) {
        const auto parameters = ReadField<Parameters>(from);
        AtParameters(from, [&] {
            if (function != nullptr) function(context, parameters);
        });
    };
}

template <typename Parameters>
CommandEntry EntryOf(CommandTraits traits, void (*run)(CommandContext&, const Parameters&)) {
    CommandEntry entry;
    entry.traits = std::move(traits);
    entry.run = WithParameters<Parameters>(run);
    entry.rewrite = [](const FieldReader& from) {
        return FieldValue<Parameters>::Write(ReadField<Parameters>(from));
    };
    entry.describe = &FieldValue<Parameters>::Describe;
    return entry;
}

}  // namespace commands

template <typename Parameters>
CommandRegistration<Parameters>::CommandRegistration(CommandTraits traits,
                                                     Function run,
                                                     Function check,
                                                     Function prepare) {
    CommandEntry entry = commands::EntryOf<Parameters>(std::move(traits), run);
    entry.check = [once = commands::WithParameters<Parameters>(check)](
                      CommandContext& context,
                      const FieldReader& from,
                      const CommandEntry::Report& report) { report([&] { once(context, from); }); };
    if (prepare != nullptr) entry.prepare = commands::WithParameters<Parameters>(prepare);
    RegisterCommand(std::move(entry));
}

template <typename Parameters>
CommandRegistration<Parameters>::CommandRegistration(CommandTraits traits,
                                                     Function run,
                                                     void (*check)(CommandContext&,
                                                                   const FieldReader&,
                                                                   const CommandEntry::Report&)) {
    CommandEntry entry = commands::EntryOf<Parameters>(std::move(traits), run);
    entry.check = check;
    RegisterCommand(std::move(entry));
}

}  // namespace trovik
