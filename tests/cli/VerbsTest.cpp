// SPDX-License-Identifier: Apache-2.0

/// \file Tests the program's help texts and completions, and the verbs for journals.
#include "tests/SourceFolder.h"
#include "tests/cli/CommandRun.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace trovik::test {
namespace {

using testing::HasSubstr;

constexpr const char* verbs[] = {"sculpt",
                                 "info",
                                 "render",
                                 "convert",
                                 "turntable",
                                 "batch",
                                 "diff",
                                 "bake",
                                 "tools",
                                 "recover",
                                 "history",
                                 "preferences",
                                 "completion",
                                 "help"};

class Verbs : public Command {};

TEST_F(Verbs, AllHaveExamplesAndDocumentTheExitStatus) {
    const Outcome all = Run("--help");
    EXPECT_EQ(all.status, 0);
    for (const char* verb : verbs) {
        SCOPED_TRACE(verb);
        EXPECT_THAT(all.out, HasSubstr(std::string("\n  ") + verb + " "));
        const Outcome help = Run(std::string(verb) + " --help");
        EXPECT_EQ(help.status, 0);
        EXPECT_THAT(help.out, HasSubstr("Examples:\n  trovik " + std::string(verb)));
        EXPECT_THAT(help.out, HasSubstr("Exit status: 0 "));
    }
}

TEST_F(Verbs, HelpExplainsACommandOrAll) {
    EXPECT_EQ(Run("help").out, Run("--help").out);
    for (const char* verb : verbs) {
        const Outcome help = Run(std::string("help ") + verb);
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.error, "");
        EXPECT_EQ(help.out, Run(std::string(verb) + " --help").out) << verb;
    }
    const Outcome unknown = Run("help sclupt");
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.error,
              "trovik: there is no command \"sclupt\"; did you mean \"sculpt\"?; trovik help "
              "--help lists the options\n");
    EXPECT_EQ(Run("help info more").status, 2);
}

TEST_F(Verbs, AreInTheManPage) {
    const std::string page = ReadAll(fs::path(SourceFolder()) / "docs/man/trovik.1");
    for (const char* verb : verbs) EXPECT_THAT(page, HasSubstr(std::string(".B ") + verb)) << verb;
}

TEST_F(Verbs, WrongUsePrintsOneLineAndExitsWithStatus2) {
    for (const auto& [arguments, reason] :
         std::initializer_list<std::pair<const char*, const char*>>{
             {"", "a command is required; trovik --help lists the options"},
             {"converrt",
              "there is no command \"converrt\"; did you mean \"convert\"?; trovik --help"},
             {"carve", "there is no command \"carve\"; trovik --help lists the options"},
             {"sculpt", "trovik sculpt --help lists the options"},
             {"sculpt s.json --loud", "trovik sculpt --help lists the options"}}) {
        const Outcome outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments;
        EXPECT_EQ(outcome.error.find('\n'), outcome.error.size() - 1) << outcome.error;
        EXPECT_EQ(outcome.error.rfind("trovik: ", 0), 0u) << outcome.error;
        EXPECT_THAT(outcome.error, HasSubstr(reason));
    }
}

TEST_F(Verbs, CompletionHasEveryVerbAndItsShellAcceptsIt) {
    for (const char* shell : {"bash", "zsh", "fish"}) {
        const Outcome script = Run(std::string("completion ") + shell);
        EXPECT_EQ(script.status, 0);
        for (const char* verb : verbs) EXPECT_THAT(script.out, HasSubstr(verb)) << shell;
        EXPECT_THAT(script.out, HasSubstr("until-damage")) << shell;
    }
    // Shells that are not installed are skipped.
    for (const std::string shell : {"bash", "zsh", "fish"}) {
        std::string check = "! command -v " + shell;
        check += " > /dev/null || '" TROVIK_COMMAND "' completion " + shell;
        check += " | " + shell + " -n /dev/stdin";
        EXPECT_EQ(std::system(check.c_str()), 0) << shell;
    }
    EXPECT_EQ(Run("completion tcsh").status, 2);
    const std::string folderName = folder.string();
    const std::string ask = "cd '" + folderName + "' && '" + TROVIK_COMMAND +
                            "' completion bash > c.sh && bash -c 'source ./c.sh; "
                            "COMP_WORDS=(trovik rec); COMP_CWORD=1; "
                            "$(complete -p trovik | sed \"s/.*-F \\([^ ]*\\).*/\\1/\") trovik rec "
                            "trovik; echo \"${COMPREPLY[@]}\"' > reply.txt 2>&1";
    EXPECT_EQ(std::system(ask.c_str()), 0);
    EXPECT_EQ(ReadAll(folder / "reply.txt"), "recover\n");
}

TEST_F(Verbs, RecoverReplaysAJournalAndHistoryListsIt) {
    WriteFile("s.json", R"({"mesh": "cube.obj", "levels": 3, "steps": [
        {"stroke": {"surface": [[0.2, 0.1, 1], [0.6, 0.3, 1]]}}, {"save": "a.trovik"}]})");
    WriteFile("t.json", R"({"scene": "a.trovik", "steps": [
        {"tool": "Flatten", "set": {"radius": 0.6}}, {"stroke": {"surface": [[0.4, 0.2, 1]]}}, {"undo": 1},
        {"stroke": {"surface": [[-0.4, 0.2, 1]]}}]})");
    ASSERT_EQ(Run("sculpt s.json -q").status, 0);
    const Outcome work = Run("sculpt t.json -q --journal w.journal");
    ASSERT_EQ(work.status, 0) << work.error;
    const Outcome history = Run("history w.journal --json");
    ASSERT_EQ(history.status, 0) << history.error;
    const auto told = nlohmann::json::parse(history.out);
    ASSERT_EQ(told.at("steps").size(), 4u);
    EXPECT_EQ(told.at("steps")[1].at("step"), "stroke Flatten");
    EXPECT_EQ(told.at("steps")[1].at("dabs"), 1);
    EXPECT_EQ(told.at("closed"), true);

    // The result is the same as that of a script that saves at the end.
    WriteFile("u.json", R"({"scene": "a.trovik", "steps": [
        {"tool": "Flatten", "set": {"radius": 0.6}}, {"stroke": {"surface": [[0.4, 0.2, 1]]}}, {"undo": 1},
        {"stroke": {"surface": [[-0.4, 0.2, 1]]}}, {"save": "wanted.trovik"}]})");
    ASSERT_EQ(Run("sculpt u.json -q").status, 0);
    const Outcome recovery = Run("recover w.journal -o got.trovik -q");
    EXPECT_EQ(recovery.status, 0) << recovery.error;
    EXPECT_EQ(ReadAll(folder / "got.trovik"), ReadAll(folder / "wanted.trovik"));

    EXPECT_EQ(Run("recover w.journal -o got.obj").status, 1);
    EXPECT_EQ(Run("recover none.journal -o got.trovik").error,
              "trovik: cannot read none.journal: No such file or directory\n");
    EXPECT_EQ(Run("history").status, 2);
}

}  // namespace
}  // namespace trovik::test
