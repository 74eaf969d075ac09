// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tests/cli/CommandRun.h"

namespace trovik::test {

/// A test of a command that writes videos, with a stand-in for the encoder.
class EncoderCommand : public Command {
protected:
    /// Makes a program with the name ffmpeg for RunWithEncoder.
    void MakeEncoder(const std::string& shellCommands) {
        fs::create_directories(folder / "bin");
        WriteFile("bin/ffmpeg", "#!/bin/sh\n" + shellCommands);
        fs::permissions(folder / "bin/ffmpeg", fs::perms::owner_all);
    }
    /// Makes an encoder whose video lists its arguments and the number of frames.
    void MakeListingEncoder() {
        MakeEncoder(
            "for last; do :; done; last=${last#file:}\n"
            "while [ $# -gt 1 ]; do [ \"$1\" = -i ] && pattern=$2; echo \"$1\" >> \"$last\"; "
            "shift; done\n"
            "case $pattern in file:*) pattern=${pattern#file:};; *) exit 1;; esac\n"
            "set -- \"${pattern%/*}\"/*.png; echo \"$# frames\" >> \"$last\"\n");
    }
    /// Runs the command with only `bin` in PATH.
    Outcome RunWithEncoder(const std::string& arguments) {
        const std::string line = "cd '" + folder.string() + "' && PATH=bin '" + TROVIK_COMMAND +
                                 "' " + arguments + " > out.txt 2> error.txt";
        const int result = std::system(line.c_str());
        return {WEXITSTATUS(result), ReadAll(folder / "out.txt"), ReadAll(folder / "error.txt")};
    }
};

}  // namespace trovik::test
