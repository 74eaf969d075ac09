// SPDX-License-Identifier: Apache-2.0

// Checks rules for the linked plug-in that cannot be checked in its source files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::StartsWith;

/// The standard output of a command, line by line. Fails the test if the command fails.
std::vector<std::string> LinesOf(const std::string& command) {
    struct ClosePipe {
        void operator()(std::FILE* pipe) const { pclose(pipe); }
    };
    std::unique_ptr<std::FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
    if (pipe == nullptr) {
        ADD_FAILURE() << "cannot run: " << command;
        return {};
    }

    std::string output;
    std::array<char, 4096> piece{};
    std::size_t count = 0;
    while ((count = std::fread(piece.data(), 1, piece.size(), pipe.get())) > 0) {
        output.append(piece.data(), count);
    }
    EXPECT_EQ(pclose(pipe.release()), 0) << "failed: " << command;

    std::vector<std::string> lines;
    std::istringstream stream(output);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string Quoted(const char* path) { return "'" + std::string(path) + "'"; }

/// Returns whether the toolchain adds this name to the dynamic symbol table of every module.
bool IsOfToolchain(const std::string& name) {
    static const std::array<const char*, 8> names = {
        "_init", "_fini", "__bss_start", "_edata", "_end", "__end__", "edata", "end"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// For each symbol, `nm` prints an address, a type letter and a name.
std::string SymbolName(const std::string& line) { return line.substr(line.find_last_of(' ') + 1); }

/// The names of the libraries that the module needs, from its dynamic section.
std::vector<std::string> NeededLibraries(const char* path) {
    std::vector<std::string> needed;
    for (const std::string& line : LinesOf("LC_ALL=C " TROVIK_READELF " -dW " + Quoted(path))) {
        const std::size_t open = line.find('[');
        const std::size_t close = line.find(']');
        if (line.find("(NEEDED)") != std::string::npos && open < close) {
            needed.push_back(line.substr(open + 1, close - open - 1));
        }
    }
    return needed;
}

TEST(BuiltFile, ModuleIsNamedWithoutLibraryPrefix) {
    const std::string path = TROVIK_MODULE_FILE;
    EXPECT_EQ(path.substr(path.find_last_of('/') + 1), "SwiftStroke.so");
}

TEST(BuiltFile, ModuleExportsNothingByName) {
    std::vector<std::string> exported;
    for (const std::string& line :
         LinesOf(TROVIK_NM " -D --defined-only " + Quoted(TROVIK_MODULE_FILE))) {
        if (!IsOfToolchain(SymbolName(line))) {
            exported.push_back(line);
        }
    }
    EXPECT_THAT(exported, IsEmpty());
}

// Validates the test above: the same check on a library with exports finds its symbols.
TEST(BuiltFile, HostLibraryExportsItsErrorType) {
    std::vector<std::string> exported;
    for (const std::string& line :
         LinesOf(TROVIK_NM " -D --defined-only " + Quoted(TROVIK_FRAMEWORK_FILE))) {
        exported.push_back(SymbolName(line));
    }
    EXPECT_THAT(exported, Contains("_ZTIN6trovik9HostErrorE"));
}

/// Whether a mangled name belongs to namespace trovik: a function or variable in it, or the virtual
/// table or type information of one of its classes.
bool IsOfTrovik(const std::string& name) {
    static const std::regex pattern("_Z(T[VITSCWH]|GV|T[hv][n0-9_]*_|)Z*N?[KVRO]*6trovik.*");
    return std::regex_match(name, pattern);
}

/// The lines of `nm` for the strong symbols that the host library exports. Templates and inline
/// functions are weak, because every module may have its own copy.
std::vector<std::string> StrongExports() {
    std::vector<std::string> strong;
    for (const std::string& line :
         LinesOf(TROVIK_NM " -D --defined-only " + Quoted(TROVIK_FRAMEWORK_FILE))) {
        const std::size_t type = line.find(' ') + 1;
        if (std::string("WVu").find(line[type]) == std::string::npos &&
            !IsOfToolchain(SymbolName(line)))
            strong.push_back(line);
    }
    return strong;
}

TEST(BuiltFile, HostLibraryExportsNamesOfTrovikOnly) {
    std::vector<std::string> others;
    const std::vector<std::string> strong = StrongExports();
    for (const std::string& line : strong)
        if (!IsOfTrovik(SymbolName(line))) others.push_back(line);
    EXPECT_GT(strong.size(), 500u);
    EXPECT_THAT(others, IsEmpty());
}

// None of these declarations is marked for export. If the list contains one of them, everything is
// exported again.
TEST(BuiltFile, HostLibraryKeepsWhatIsNotMarked) {
    for (const std::string& line : StrongExports())
        for (const char* unmarked : {"12LevelRefiner", "11GltfBuffers", "8UsdNames"})
            EXPECT_EQ(line.find(unmarked), std::string::npos) << line;
}

TEST(BuiltFile, ModuleNeedsHostLibraryAndDetailBrush) {
    const std::vector<std::string> needed = NeededLibraries(TROVIK_MODULE_FILE);
    EXPECT_THAT(needed, Contains(StartsWith("libTrovikFramework.so")));
    EXPECT_THAT(needed, Contains(StartsWith("libDetailBrush.so")));
}

TEST(BuiltFile, ModuleNeedsNoGuiLibrary) {
    for (const std::string& library : NeededLibraries(TROVIK_MODULE_FILE)) {
        EXPECT_FALSE(library.starts_with("libQt6Gui") || library.starts_with("libQt6Widgets"))
            << library;
    }
}

TEST(BuiltFile, DetailBrushNeedsHostLibrary) {
    EXPECT_THAT(NeededLibraries(TROVIK_DETAIL_BRUSH_FILE),
                Contains(StartsWith("libTrovikFramework.so")));
}

// The opposite dependency would be circular; the host finds plug-ins at run time.
TEST(BuiltFile, HostLibraryNeedsNoBrush) {
    for (const std::string& library : NeededLibraries(TROVIK_FRAMEWORK_FILE)) {
        EXPECT_FALSE(library.starts_with("libDetailBrush") || library.starts_with("SwiftStroke"))
            << library;
    }
}

}  // namespace
