// SPDX-License-Identifier: Apache-2.0
#include "events/EventFile.h"

#include "framework/io/OutputFile.h"

#include <QKeySequence>

#include <type_traits>

namespace trovik::studio {

namespace {

// Fields in the order in which they are documented.
using Json = nlohmann::ordered_json;

const char* NameOf(PenInput::Kind kind) {
    switch (kind) {
        case PenInput::Kind::Press:
            return "press";
        case PenInput::Kind::Release:
            return "release";
        case PenInput::Kind::Move:
            break;
    }
    return "move";
}

void PutPosition(Json& json, const QPointF& position) {
    json["x"] = position.x();
    json["y"] = position.y();
}

void PutButton(Json& json, PenInput::Kind kind, Qt::MouseButton button) {
    if (kind == PenInput::Kind::Move) return;
    json["button"] = button == Qt::MiddleButton  ? "middle"
                     : button == Qt::RightButton ? "right"
                                                 : "left";
}

Json Numbers(const Vector& vector) { return {vector.x, vector.y, vector.z}; }

void Put(Json& json, const PenInput& pen) {
    json["type"] = "pen";
    json["kind"] = NameOf(pen.kind);
    PutPosition(json, pen.position);
    json["pressure"] = pen.pressure;
    if (!pen.tilt.isNull()) json["tilt"] = {pen.tilt.x(), pen.tilt.y()};
    if (pen.rotation != 0.0) json["rotation"] = pen.rotation;
    PutButton(json, pen.kind, pen.button);
    if (pen.isEraser) json["eraser"] = true;
}

void Put(Json& json, const MouseInput& mouse) {
    json["type"] = "mouse";
    json["kind"] = NameOf(mouse.kind);
    PutPosition(json, mouse.position);
    PutButton(json, mouse.kind, mouse.button);
    if (mouse.isFromPen) json["fromPen"] = true;
}

void Put(Json& json, const WheelInput& wheel) {
    json["type"] = "wheel";
    PutPosition(json, wheel.position);
    json["delta"] = {wheel.delta.x(), wheel.delta.y()};
}

void Put(Json& json, const KeyInput& key) {
    json["type"] = "key";
    json["kind"] = key.kind == KeyInput::Kind::Press     ? "press"
                   : key.kind == KeyInput::Kind::Release ? "release"
                                                         : "tap";
    const QString name = key.key.keyboardModifiers() == Qt::NoModifier
                             ? KeyName(key.key.key())
                             : QKeySequence(key.key).toString(QKeySequence::PortableText);
    json["key"] = name.toStdString();
    if (!key.text.isEmpty()) json["text"] = key.text.toStdString();
}

void Put(Json& json, const TickInput&) { json["type"] = "tick"; }

void Put(Json& json, const ActionInput& action) {
    json["type"] = "action";
    json["id"] = action.id.toStdString();
}

void Put(Json& json, const StepInput& step) {
    json["type"] = "step";
    json["step"] = step.step;
}

void Put(Json& json, const OpenInput& open) {
    json["type"] = "open";
    if (!open.mesh.empty()) json["mesh"] = open.mesh;
    if (!open.scene.empty()) json["scene"] = open.scene;
    if (open.levels > 0) json["levels"] = open.levels;
}

void Put(Json& json, const CameraInput& camera) {
    json["type"] = "camera";
    json["eye"] = Numbers(camera.eye);
    json["target"] = Numbers(camera.target);
    json["up"] = Numbers(camera.up);
    json["fieldOfView"] = camera.fieldOfView;
    if (camera.isOrthographic) json["orthographic"] = true;
}

void Put(Json& json, const ResizeInput& resize) {
    json["type"] = "resize";
    json["viewport"] = {resize.viewport.width(), resize.viewport.height()};
}

void Put(Json& json, const WaitInput&) { json["type"] = "wait"; }

void Put(Json& json, const ScreenshotInput& screenshot) {
    json["type"] = "screenshot";
    json["file"] = screenshot.file.toStdString();
    if (screenshot.isWindow) json["window"] = true;
}

}  // namespace

QString KeyName(int key) {
    switch (key) {
        case Qt::Key_Shift:
            return QStringLiteral("Shift");
        case Qt::Key_Control:
            return QStringLiteral("Ctrl");
        case Qt::Key_Alt:
            return QStringLiteral("Alt");
        case Qt::Key_Meta:
            return QStringLiteral("Meta");
        default:
            return QKeySequence(key).toString(QKeySequence::PortableText);
    }
}

void WriteEventFile(const EventFile& file, const std::string& path) {
    Json head = {{"format", "trovik-events"}, {"version", 1}};
    head["viewport"] = {file.viewport.width(), file.viewport.height()};
    if (file.pixelRatio != 1.0) head["pixelRatio"] = file.pixelRatio;
    OutputFile output(path);
    std::string text = head.dump();
    text.pop_back();
    output.Write(text + ", \"events\": [");
    const char* separator = "\n";
    for (const TimedInput& event : file.events) {
        Json json = {{"time", event.time}};
        std::visit([&](const auto& input) { Put(json, input); }, event.input);
        output.Write(separator);
        output.Write(json.dump());
        separator = ",\n";
    }
    output.Write("\n]}\n");
    output.Commit();
}

}  // namespace trovik::studio
