// SPDX-License-Identifier: Apache-2.0
#include "HelpTexts.h"

#include "framework/errors/Suggestion.h"

#include <algorithm>
#include <map>

namespace trovik {

namespace {

constexpr const char* exitStatus =
    "Exit status: 0 success; 1 failure, with the reason in one line on standard error; 2 invalid "
    "usage; 130 interrupted by Ctrl-C.";

/// The exit status of `diff`, which follows the convention of the diff tool.
constexpr const char* exitStatusOfDiff =
    "Exit status: 0 equal within the tolerance; 1 different; 2 failure, with the reason in one "
    "line on standard error, or invalid usage; 130 interrupted by Ctrl-C.";

const std::map<std::string, std::string>& Examples() {
    static const std::map<std::string, std::string> examples = {
        {"sculpt",
         "  trovik sculpt bust.json                 writes files to the working folder\n"
         "  trovik sculpt bust.json -o out -q       writes files to the folder out, prints "
         "nothing\n"
         "  trovik sculpt bust.json --json          prints the summary as JSON\n"
         "  trovik sculpt bust.json --strict        stops at the first step without effect\n"
         "  trovik sculpt bust.json --check         reports errors without sculpting\n"
         "  trovik sculpt bust.json --set side=left replaces ${side} in strings of the script\n"
         "  make-script | trovik sculpt -           reads a script from standard input\n"},
        {"info",
         "  trovik info head.obj                    vertices, faces, size, attributes\n"
         "  trovik info bust.trovik                 levels, layers and tools of a scene\n"
         "  trovik info print.stl --min-thickness 0.8   walls that are too thin to print\n"
         "  trovik info *.obj --json                a list, one entry per file\n"},
        {"render",
         "  trovik render head.obj head.png\n"
         "  trovik render head.obj side.jpg --from 1 0 0 --width 1600 --height 1200 --samples 32\n"
         "  trovik render bust.trovik bust.png      uses the scene's camera\n"
         "  trovik render head.obj cut-out.png --matcap bronze --transparent\n"
         "  trovik render head.obj spin.png --frames 36        spin_0001.png to spin_0036.png\n"},
        {"convert",
         "  trovik convert head.obj head.glb\n"
         "  trovik convert head.obj fine.ply --levels 2\n"
         "  trovik convert bust.trovik bust.glb --faces 50000 --lods 3\n"
         "                                          also bust.lod1.glb to bust.lod3.glb\n"
         "  trovik convert head.obj print.stl --from-units cm --units mm --up z\n"},
        {"batch",
         "  trovik batch wear.json meshes -o worn   each mesh of a folder; the script contains\n"
         "                                          \"mesh\": \"${input}\" and \"save\": "
         "\"${stem}.trovik\"\n"
         "  trovik batch wear.json a.obj b.obj --format ply --set side=left --jobs 4\n"},
        {"turntable",
         "  trovik turntable bust.trovik spin       spin/frame_0001.png to frame_0072.png\n"
         "  trovik turntable head.obj spin.mp4 --frames 120 --fps 30 --matcap bronze\n"
         "  trovik turntable head.obj spin --frames 12 --sheet sheet.png --columns 4\n"},
        {"diff",
         "  trovik diff old.obj new.obj             largest, mean and RMS distance\n"
         "  trovik diff a.trovik b.ply --tolerance 1e-4 -q     only the exit status\n"
         "  trovik diff scan.ply low.obj --heatmap distances.png\n"},
        {"tools",
         "  trovik tools\n"
         "  trovik tools --json\n"},
        {"completion",
         "  trovik completion bash > ~/.local/share/bash-completion/completions/trovik\n"
         "  trovik completion zsh > ~/.zfunc/_trovik        with ~/.zfunc in fpath\n"
         "  trovik completion fish > ~/.config/fish/completions/trovik.fish\n"},
        {"recover", "  trovik recover bust.journal -o bust.trovik\n"},
        {"history",
         "  trovik history bust.journal\n"
         "  trovik history bust.trovik --json\n"
         "  trovik history bust.journal --frames lapse         lapse/frame_0001.png and so on\n"
         "  trovik history bust.journal --frames lapse.mp4 --count 240 --fit first\n"},
        {"preferences",
         "  trovik preferences                      lists the values and the file name\n"
         "  trovik preferences 'Undo Budget' 4096   stores a value\n"},
        {"help",
         "  trovik help\n"
         "  trovik help sculpt\n"},
        {"bake",
         "  trovik bake bust.trovik -o height.exr\n"
         "  trovik bake bust.trovik --map normal --size 2048 -o normals.png\n"},
    };
    return examples;
}

/// Returns the requested verb, or the program if there is none.
const CLI::App& RequestedCommand(const CLI::App& program) {
    const std::vector<CLI::App*> verbs = program.get_subcommands();
    return verbs.empty() ? program : *verbs.front();
}

}  // namespace

void AddHelpTexts(CLI::App& program) {
    for (CLI::App* verb : program.get_subcommands([](CLI::App*) { return true; })) {
        const auto found = Examples().find(verb->get_name());
        std::string footer;
        if (found != Examples().end()) footer = "Examples:\n" + found->second + "\n";
        verb->footer(footer + (verb->get_name() == "diff" ? exitStatusOfDiff : exitStatus));
    }
}

std::string UnknownCommand(const CLI::App& program, const std::string& name) {
    std::vector<std::string> names;
    for (const CLI::App* verb : program.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(verb->get_name());
    const std::string closest = ClosestWord(name, names);
    return "there is no command \"" + name + "\"" +
           (closest.empty() ? "" : "; did you mean \"" + closest + "\"?");
}

std::string UsageError(const CLI::App& program, const CLI::ParseError& error) {
    const CLI::App& requested = RequestedCommand(program);
    const std::string help = requested.get_parent() == nullptr
                                 ? "trovik --help"
                                 : "trovik " + requested.get_name() + " --help";
    std::string reason = error.what();
    if (&requested == &program) {
        const std::vector<std::string> rest = program.remaining();
        if (rest.empty())
            reason = "a command is required";
        else if (rest.front().front() != '-')
            reason = UnknownCommand(program, rest.front());
    }
    std::replace(reason.begin(), reason.end(), '\n', ' ');
    return reason + "; " + help + " lists the options";
}

}  // namespace trovik
