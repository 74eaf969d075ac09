// SPDX-License-Identifier: Apache-2.0
#include "Commands.h"
#include "host/Error.h"

#include <cstdio>
#include <exception>

namespace {

constexpr int done = 0;
constexpr int failed = 1;
constexpr int wrongUsage = 2;

int Fail(const std::string& reason) {
    std::fprintf(stderr, "trovik: %s\n", reason.c_str());
    return failed;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App program(
        "Sculpts meshes from scripts, without a screen.\n\n"
        "  trovik sculpt stroke.json            run a stroke script\n"
        "  trovik info head.obj                 what is in a mesh file\n"
        "  trovik render head.obj head.png      a picture of a mesh\n"
        "  trovik convert head.obj head.ply     write a mesh in another format\n"
        "  trovik bake head.trovik -o head.exr  a map of what a fine level has over a coarse one\n"
        "  trovik tools                         the tools of the brush\n"
        "  trovik recover w.journal -o w.trovik the work of a journal, after a crash\n"
        "  trovik history w.journal             the steps of a journal\n\n"
        "Exit status: 0 done, 1 the work failed (one line on standard error says why), 2 wrong "
        "usage.",
        "trovik");
    program.set_version_flag("--version", std::string("trovik ") + TROVIK_VERSION);
    program.require_subcommand(1);
    trovik::AddSculptCommand(program);
    trovik::AddInfoCommand(program);
    trovik::AddRenderCommand(program);
    trovik::AddConvertCommand(program);
    trovik::AddBakeCommand(program);
    trovik::AddToolsCommand(program);
    trovik::AddRecoverCommand(program);
    trovik::AddHistoryCommand(program);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? done : wrongUsage;
    } catch (const std::bad_alloc&) {
        return Fail("out of memory");
    } catch (const std::exception& error) {
        return Fail(error.what());
    } catch (trovik::Error* error) {
        const std::string reason = error->Message().toStdString();
        trovik::Error::Dispose(error);
        return Fail(reason);
    }
    return done;
}
