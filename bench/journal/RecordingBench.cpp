// SPDX-License-Identifier: Apache-2.0

/// \file Measures the cost of recording a stroke in the journal, in an undo step and in a layer.
/// Each benchmark applies the same stroke of about forty dabs. Compare ratios within one run, not
/// absolute times, or count instructions: valgrind --tool=callgrind journal-bench
/// --benchmark_filter=... .
#include "framework/script/ScriptDocument.h"
#include "framework/script/ScriptRunner.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace trovik::test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// A cube with this many subdivisions, and a tool whose dabs cover a thirtieth of a side.
class Work {
public:
    Work(int levels, bool withJournal, bool withLayer)
        : folder(fs::temp_directory_path() / ("trovik-keeping-" + std::to_string(getpid()))) {
        fs::create_directories(folder);
        std::ofstream(folder / "cube.obj")
            << "v -1 -1 -1\nv 1 -1 -1\nv -1 1 -1\nv 1 1 -1\nv -1 -1 1\nv 1 -1 1\nv -1 1 1\n"
               "v 1 1 1\nf 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";
        const json script = {{"mesh", "cube.obj"}, {"levels", levels}, {"steps", json::array()}};
        const std::string name = (folder / "script.json").string();
        runner = std::make_unique<ScriptRunner>(name, folder.string(), ScriptProgress{});
        if (withJournal) runner->SetJournal({(folder / "work.journal").string(), false});
        setup = ParseStrokeScript(script.dump(), name);
        runner->Open(setup);
        Do({{"tool", "Sculpt"}, {"set", {{"radius", 0.2}, {"strength", 1}, {"spacing", 15}}}});
        if (withLayer) Do({{"layer", {{"add", "layer"}}}});
        // The first stroke allocates buffers that later strokes reuse.
        Do(Stroke(false));
    }
    ~Work() {
        runner.reset();
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    Work(const Work&) = delete;
    Work& operator=(const Work&) = delete;

    void Do(const json& step) { runner->Do(step, 0); }
    static json Stroke(bool open) {
        return {
            {"stroke", {{"surface", {{-0.5f, -0.3f, 1.0f}, {0.5f, 0.4f, 1.0f}}}, {"open", open}}}};
    }
    Document& GetDocument() { return runner->GetDocument(); }

private:
    fs::path folder;
    json setup;
    std::unique_ptr<ScriptRunner> runner;
};

struct Kept {
    bool journal;
    bool undo;
    bool layer;
};

// A stroke always records its changes. At its end, the undo step is created from these records and
// queued for compression. Without undo, the end of the stroke is not measured.
void KeptStroke(benchmark::State& state, Kept kept) {
    Work work(static_cast<int>(state.range(0)), kept.journal, kept.layer);
    const json whole = Work::Stroke(false);
    const json open = Work::Stroke(true);
    const json end = {{"stroke", {{"continue", true}}}};
    const uint64_t before = work.GetDocument().Totals().dabs;
    for (auto _ : state) {
        work.Do(kept.undo ? whole : open);
        state.PauseTiming();
        if (!kept.undo) work.Do(end);
        work.GetDocument().Geometry().History().Settle();
        work.GetDocument().Geometry().History().Clear();
        state.ResumeTiming();
    }
    const uint64_t dabs = work.GetDocument().Totals().dabs - before;
    state.SetItemsProcessed(static_cast<int64_t>(dabs));
    state.counters["dabs"] =
        benchmark::Counter(static_cast<double>(dabs), benchmark::Counter::kAvgIterations);
}

#define KEPT_STROKE(name, journal, undo, layer)                     \
    BENCHMARK_CAPTURE(KeptStroke, name, Kept{journal, undo, layer}) \
        ->Arg(7)                                                    \
        ->Arg(9)                                                    \
        ->Unit(benchmark::kMillisecond)

KEPT_STROKE(Bare, false, false, false);
KEPT_STROKE(Journal, true, false, false);
KEPT_STROKE(Undo, false, true, false);
KEPT_STROKE(Layer, false, false, true);
KEPT_STROKE(All, true, true, true);

}  // namespace
}  // namespace trovik::test
