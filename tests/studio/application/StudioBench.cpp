// SPDX-License-Identifier: Apache-2.0

/// \file
/// Measures how long a sculptor waits for trovik-studio. Run it on a display, for example under
/// Xvfb:
///
///     studio-bench [MEASURE...]
///
/// The measures are start, stroke, rate, undo and memory; the default is all except memory.
/// The first run is slower, because the driver has no compiled shaders in its cache.
///
/// Prints one line for each number. `memory` needs about 4 GB. Processor times are those of all
/// threads of the process; unlike the other times, they hardly depend on other processes.
#include "StudioApplication.h"
#include "commands/Primitives.h"
#include "tests/studio/WaitFor.h"
#include "viewport/ViewportWidget.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>

namespace trovik::studio {

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::time_point since) {
    return std::chrono::duration<double, std::milli>(Clock::now() - since).count();
}

double Quantile(std::vector<double> values, double fraction) {
    if (values.empty()) return 0.0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
}

void Print(const char* name, double value, const char* unit) {
    std::printf("%-52s %10.2f %s\n", name, value, unit);
    std::fflush(stdout);
}

/// Processor time of all threads of the process, milliseconds.
double ProcessorMilliseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) * 1e-6;
}

/// Resident memory of the process, bytes.
double ResidentBytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0) return std::stod(line.substr(6)) * 1024.0;
    return 0.0;
}

class Bench {
public:
    /// \param begin  when the process started.
    explicit Bench(Clock::time_point begin) {
        CommandLine line;
        line.hasNoPreferences = true;
        line.viewportWidth = 960;
        line.viewportHeight = 720;
        studio = std::make_unique<StudioApplication>(line);
        studio->Start();
        WaitForPicture();
        startMilliseconds = Milliseconds(begin);
        startProcessor = ProcessorMilliseconds();
    }

    void Start() const {
        Print("main to a window with a sphere", startMilliseconds, "ms");
        Print("processor time of this", startProcessor, "ms");
    }

    /// Measures live dabs that each cover 100 thousand vertices of a sphere of 1.6 million quads.
    void Stroke(const char* tool) {
        OpenSphere(4);
        CurrentEngine().Run({{"tool", tool}, {"set", {{"radius", 0.505}, {"strength", 5}}}});
        CurrentEngine().Run({{"set", {{"smoothing", false}}}});
        WaitForPicture();
        std::printf("--- %s\n", tool);
        // Only the engine and the packing are measured, not the software renderer.
        studio->Viewport().setUpdatesEnabled(false);
        std::vector<double> times, engineTimes, bytes;
        Clock::time_point sampled;
        const auto surface =
            QObject::connect(&CurrentEngine(), &Engine::SurfaceArrived, &studio->Window(), [&] {
                std::size_t vertices = 0;
                for (const auto& update : CurrentEngine().TakeUpdates())
                    vertices += update->vertices.size();
                times.push_back(Milliseconds(sampled));
                bytes.push_back(static_cast<double>(vertices * sizeof(DisplayVertex)));
            });
        unsigned dabs = 0;
        const auto figures = QObject::connect(&CurrentEngine(),
                                              &Engine::StrokeAdvanced,
                                              &studio->Window(),
                                              [&](const StrokeFigures& f) {
                                                  if (f.dabs > dabs)
                                                      engineTimes.push_back(f.millisecondsPerDab);
                                                  dabs = f.dabs;
                                              });
        StrokeStart start;
        start.view = studio->Viewport().View().ToStrokeView();
        CurrentEngine().BeginStroke(start);
        const double processorBefore = ProcessorMilliseconds();
        for (int i = 0; i < 240; ++i) {
            // Gives about one dab for every two samples.
            const double angle = 0.3 * i;
            sampled = Clock::now();
            CurrentEngine().AddSamples({{480.0f + static_cast<float>(60.0 * std::cos(angle)),
                                         360.0f + static_cast<float>(60.0 * std::sin(angle)),
                                         0.5f,
                                         0.0f,
                                         0.0f,
                                         8.0 * i}});
            WaitFor([this] { return CurrentEngine().IsIdle(); });
        }
        const double processor = ProcessorMilliseconds() - processorBefore;
        CurrentEngine().EndStroke();
        WaitFor([this] { return CurrentEngine().IsIdle(); });
        QObject::disconnect(surface);
        QObject::disconnect(figures);
        studio->Viewport().setUpdatesEnabled(true);
        Print("updates with dabs", static_cast<double>(times.size()), "");
        Print("dabs", dabs, "");
        Print("processor time for each dab",
              processor / std::max(1.0, static_cast<double>(dabs)),
              "ms");
        Print("pen sample to posted patches, minimum", Quantile(times, 0.0), "ms");
        Print("pen sample to posted patches, median", Quantile(times, 0.5), "ms");
        Print("pen sample to posted patches, 95 %", Quantile(times, 0.95), "ms");
        Print("of these in the brush per dab, minimum", Quantile(engineTimes, 0.0), "ms");
        Print("of these in the brush per dab, median", Quantile(engineTimes, 0.5), "ms");
        Print("bytes staged for an update, median", Quantile(bytes, 0.5) / 1e6, "MB");
    }

    /// Measures a pen that reports at 1000 Hz, along a path that is long enough for about three
    /// dabs per frame at 60 Hz. Prints the actual number of dabs, which is smaller if samples
    /// arrive late.
    void Rate() {
        constexpr int samples = 2000;
        OpenSphere(4);
        CurrentEngine().Run({{"tool", "Sculpt"}, {"set", {{"radius", 0.023}, {"strength", 5}}}});
        WaitForPicture();
        studio->Viewport().setUpdatesEnabled(false);
        std::vector<double> delays;
        const auto surface =
            QObject::connect(&CurrentEngine(), &Engine::SurfaceArrived, &studio->Window(), [&] {
                const double now =
                    std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
                for (const auto& update : CurrentEngine().TakeUpdates())
                    if (update->sampleTime > 0.0)
                        delays.push_back((now - update->sampleTime) * 1e3);
            });
        unsigned dabs = 0;
        const auto figures = QObject::connect(&CurrentEngine(),
                                              &Engine::StrokeAdvanced,
                                              &studio->Window(),
                                              [&](const StrokeFigures& f) { dabs = f.dabs; });
        StrokeStart start;
        start.view = studio->Viewport().View().ToStrokeView();
        CurrentEngine().BeginStroke(start);
        const auto begin = Clock::now();
        int sent = 0;
        while (sent < samples) {
            const int due = std::min(samples, static_cast<int>(Milliseconds(begin)) + 1);
            std::vector<PenPoint> points;
            for (; sent < due; ++sent)
                points.push_back({400.0f + 0.08f * static_cast<float>(sent),
                                  360.0f + 60.0f * std::sin(0.01f * static_cast<float>(sent)),
                                  0.5f,
                                  0.0f,
                                  0.0f,
                                  static_cast<double>(sent)});
            if (!points.empty()) CurrentEngine().AddSamples(std::move(points));
            WaitFor([] { return false; }, 1);
        }
        CurrentEngine().EndStroke();
        WaitFor([this] { return CurrentEngine().IsIdle(); });
        QObject::disconnect(surface);
        QObject::disconnect(figures);
        studio->Viewport().setUpdatesEnabled(true);
        Print("1000 Hz: dabs for each frame of 60 Hz", dabs / (samples * 60e-3), "");
        Print("1000 Hz: sample to posted patches, median", Quantile(delays, 0.5), "ms");
        Print("1000 Hz: sample to posted patches, longest", Quantile(delays, 1.0), "ms");
        Print("1000 Hz: samples that are missing or doubled", samples - DistinctSamples(), "");
    }

    /// Measures the undo of a stroke that covers 100 thousand vertices: the delay and the number of
    /// frames until the viewport shows it.
    void Undo() {
        OpenSphere(4);
        CurrentEngine().Run({{"tool", "Wax"}, {"set", {{"radius", 0.505}}}});
        CurrentEngine().Run({{"stroke", {{"pointer", {{480, 360}}}}}});
        WaitForPicture();
        int frames = 0;
        const auto frame = QObject::connect(
            &studio->Viewport(), &ViewportWidget::FrameDrawn, &studio->Window(), [&frames] {
                ++frames;
            });
        const auto begin = Clock::now();
        double posted = 0.0;
        const auto surface =
            QObject::connect(&CurrentEngine(), &Engine::SurfaceArrived, &studio->Window(), [&] {
                if (posted == 0.0) posted = Milliseconds(begin);
            });
        studio->Actions().Trigger("edit.undo");
        WaitFor([&posted] { return posted > 0.0; });
        QObject::disconnect(surface);
        Print("undo: request to posted patches", posted, "ms");
        WaitForPicture();
        QObject::disconnect(frame);
        Print("undo: frames until it is shown", frames, "");
        Print("undo: bytes uploaded in the last frame",
              static_cast<double>(studio->Viewport().Stats().bytesUploaded) / 1e6,
              "MB");
    }

    /// Measures the memory for a plane of 16.8 million quads.
    void Memory() {
        const double before = ResidentBytes();
        OpenRequest request;
        request.meshPath =
            WritePrimitive(Primitive::Plane, 16, folder.filePath("shapes").toStdString());
        request.levels = 8;
        Open(request);
        const double buffers = static_cast<double>(studio->Viewport().Stats().bufferBytes);
        const auto mesh = static_cast<double>(CurrentEngine().State()->memoryBytes);
        const double other = ResidentBytes() - before - buffers - mesh;
        Print("faces", CurrentEngine().State()->levels.back().faces / 1e6, "million");
        Print("vertex and index buffers", buffers / 1e6, "MB");
        Print("accounted arrays of the mesh and its levels", mesh / 1e6, "MB");
        Print("other resident memory", other / 1e6, "MB");
        Print("other resident memory", 100.0 * other / mesh, "% of the mesh");
    }

private:
    Engine& CurrentEngine() { return studio->GetEngine(); }

    /// The number of samples of the last stroke in the list of actions; -1 if their times do not
    /// increase.
    int DistinctSamples() {
        const std::string path = folder.filePath("actions.json").toStdString();
        bool isSaved = false;
        CurrentEngine().SaveActions(path,
                                    [&isSaved](const QString&, const QString&) { isSaved = true; });
        WaitFor([&isSaved] { return isSaved; });
        std::ifstream file(path);
        const nlohmann::json script = nlohmann::json::parse(file);
        const nlohmann::json& pen = script.at("steps").back().at("stroke").at("pen");
        for (std::size_t i = 1; i < pen.size(); ++i)
            if (!(pen[i].at(3).get<double>() > pen[i - 1].at(3).get<double>())) return -1;
        return static_cast<int>(pen.size());
    }

    void WaitForPicture() {
        WaitFor(
            [this] {
                return CurrentEngine().HasDocument() && CurrentEngine().IsIdle() &&
                       !CurrentEngine().IsBusy() && studio->Viewport().IsComplete();
            },
            600'000);
    }

    void Open(const OpenRequest& request) {
        bool isOpen = false;
        const auto opened = QObject::connect(
            &CurrentEngine(), &Engine::Opened, &studio->Window(), [&isOpen] { isOpen = true; });
        CurrentEngine().Open(request);
        WaitFor([&isOpen] { return isOpen; }, 600'000);
        QObject::disconnect(opened);
        WaitForPicture();
    }

    void OpenSphere(int levels) {
        OpenRequest request;
        request.meshPath =
            WritePrimitive(Primitive::Sphere, 32, folder.filePath("shapes").toStdString());
        request.levels = levels;
        Open(request);
    }

    QTemporaryDir folder;
    std::unique_ptr<StudioApplication> studio;
    double startMilliseconds = 0.0;
    double startProcessor = 0.0;
};

}  // namespace

}  // namespace trovik::studio

int main(int argc, char** argv) {
    const auto begin = std::chrono::steady_clock::now();
    QTemporaryDir home;
    // The driver's cache of compiled shaders is kept, as between two starts by a user.
    if (qEnvironmentVariableIsEmpty("MESA_SHADER_CACHE_DIR"))
        qputenv("MESA_SHADER_CACHE_DIR",
                QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation).toUtf8());
    for (const char* variable :
         {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME"})
        qputenv(variable, home.path().toUtf8());
    const QApplication application(argc, argv);
    const std::vector<std::string> wanted(argv + 1, argv + argc);
    const auto isWanted = [&](const char* name) {
        if (wanted.empty()) return std::string(name) != "memory";
        return std::find(wanted.begin(), wanted.end(), name) != wanted.end();
    };
    trovik::studio::Bench bench(begin);
    if (isWanted("start")) bench.Start();
    if (isWanted("stroke")) {
        bench.Stroke("Sculpt");
        bench.Stroke("Wax");
    }
    if (isWanted("rate")) bench.Rate();
    if (isWanted("undo")) bench.Undo();
    if (isWanted("memory")) bench.Memory();
    return 0;
}
