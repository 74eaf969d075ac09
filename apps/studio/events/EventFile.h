// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "viewport/Camera.h"

#include <QPoint>
#include <QPointF>
#include <QSize>
#include <QString>
#include <Qt>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

/// \file
/// Recorded events of the studio; docs/studio-events.md describes the file format. Positions are in
/// logical pixels of the viewport, with (0, 0) at the top left corner.
namespace trovik::studio {

struct PenInput {
    enum class Kind { Press, Move, Release };
    Kind kind = Kind::Move;
    QPointF position;
    /// 0 to 1.
    double pressure = 0.0;
    /// Degrees from upright, along x and y.
    QPointF tilt;
    /// Degrees.
    double rotation = 0.0;
    /// The button of a press or release.
    Qt::MouseButton button = Qt::LeftButton;
    bool isEraser = false;
    bool operator==(const PenInput&) const = default;
};
struct MouseInput {
    using Kind = PenInput::Kind;
    Kind kind = Kind::Move;
    QPointF position;
    Qt::MouseButton button = Qt::LeftButton;
    /// Whether the window system synthesised it from a pen event.
    bool isFromPen = false;
    bool operator==(const MouseInput&) const = default;
};
struct WheelInput {
    QPointF position;
    /// Eighths of a degree.
    QPoint delta;
    bool operator==(const WheelInput&) const = default;
};
struct KeyInput {
    enum class Kind { Press, Release, Tap };
    Kind kind = Kind::Press;
    /// A key; taps may have modifiers.
    QKeyCombination key = QKeyCombination(Qt::Key_unknown);
    QString text;
    bool operator==(const KeyInput&) const = default;
};
/// Reports that the pen has been held still until the event's timestamp.
struct TickInput {
    bool operator==(const TickInput&) const = default;
};
struct ActionInput {
    QString id;
    bool operator==(const ActionInput&) const = default;
};
struct StepInput {
    nlohmann::json step;
    bool operator==(const StepInput&) const = default;
};
struct OpenInput {
    /// Paths are relative to the event file's folder.
    std::string mesh, scene;
    int levels = 0;
    bool operator==(const OpenInput&) const = default;
};
using CameraInput = CameraPose;
struct ResizeInput {
    QSize viewport;
    bool operator==(const ResizeInput&) const = default;
};
struct WaitInput {
    bool operator==(const WaitInput&) const = default;
};
struct ScreenshotInput {
    /// Relative to the player's output folder.
    QString file;
    /// Whether to capture the whole window instead of the viewport.
    bool isWindow = false;
    bool operator==(const ScreenshotInput&) const = default;
};

using Input = std::variant<PenInput,
                           MouseInput,
                           WheelInput,
                           KeyInput,
                           TickInput,
                           ActionInput,
                           StepInput,
                           OpenInput,
                           CameraInput,
                           ResizeInput,
                           WaitInput,
                           ScreenshotInput>;

struct TimedInput {
    /// Milliseconds on the pen's clock.
    uint32_t time = 0;
    Input input;
    bool operator==(const TimedInput&) const = default;
};

/// A list of events in playback order.
struct EventFile {
    /// File name for messages; empty if the events were not read from a file.
    std::string path;
    /// Logical pixels.
    QSize viewport{960, 720};
    /// Device pixels per logical pixel when the events were recorded. Strokes are bit-identical
    /// only if the ratio is the same during playback.
    double pixelRatio = 1.0;
    std::vector<TimedInput> events;
};

/// Reads and validates a file of at most 64 MiB. \throw HostError with one line: file, JSON pointer
/// or line, value.
EventFile ReadEventFile(const std::string& path);
/// Like ReadEventFile, but from text. \param name  for messages; relative paths are relative to its
/// folder.
EventFile ParseEventFile(const std::string& text, const std::string& name);

/// Writes a complete file, with one event per line. \throw HostError that names the path.
void WriteEventFile(const EventFile& file, const std::string& path);

/// Portable name of a key without modifiers, such as "Shift", "F" or "Esc".
QString KeyName(int key);

}  // namespace trovik::studio
