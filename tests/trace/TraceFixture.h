// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/script/ScriptRunner.h"
#include "tests/files/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <vector>

namespace trovik::test {

/// The lines of a trace.
inline std::vector<nlohmann::json> ReadTrace(const std::string& folder) {
    std::ifstream file(folder + "/trace.jsonl");
    std::vector<nlohmann::json> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(nlohmann::json::parse(line));
    return lines;
}

inline std::vector<nlohmann::json> LinesOf(const std::vector<nlohmann::json>& trace,
                                           const std::string& call) {
    std::vector<nlohmann::json> lines;
    for (const nlohmann::json& line : trace)
        if (line.at("call") == call) lines.push_back(line);
    return lines;
}

inline std::vector<std::string> KeysOf(const nlohmann::json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) keys.push_back(key);
    return keys;
}

/// Runs scripts on a cube with corners at 1 and -1 and reads their traces.
class TraceFixture : public ::testing::Test {
protected:
    TraceFixture() {
        folder.Fill("cube.obj",
                    "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv 1 -1 1\nv -1 1 1\n"
                    "v 1 1 1\nf 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n");
    }

    /// Runs steps on the cube. \param setUp  additional script fields, each followed by a comma.
    void Run(const std::string& steps, const std::string& setUp = "", unsigned every = 0) {
        const std::string script = folder.Fill(
            "s.json", "{\"mesh\": \"cube.obj\", " + setUp + "\"steps\": [" + steps + "]}");
        ScriptRunner runner(script, folder.Path("."), {});
        TraceOptions options;
        options.folder = folder.Path("trace");
        options.every = every;
        runner.SetTrace(options);
        runner.Run();
        trace = ReadTrace(options.folder);
    }
    std::vector<std::string> Calls() const {
        std::vector<std::string> calls;
        for (const nlohmann::json& line : trace) calls.push_back(line.at("call"));
        return calls;
    }
    nlohmann::json Line(const std::string& call, std::size_t index = 0) const {
        return LinesOf(trace, call).at(index);
    }
    std::string At(const std::string& path) const { return folder.Path("trace/" + path); }
    bool Has(const std::string& path) const { return std::filesystem::exists(At(path)); }
    nlohmann::json Meta(const std::string& state) const {
        return nlohmann::json::parse(TemporaryFolder::Content(At(state + "/m0/meta.json")));
    }

    TemporaryFolder folder;
    std::vector<nlohmann::json> trace;
};

}  // namespace trovik::test
