// SPDX-License-Identifier: Apache-2.0
#include "events/EventFile.h"
#include "events/EventSchema.h"
#include "framework/errors/HostError.h"
#include "framework/json/JsonSchema.h"
#include "framework/json/JsonText.h"
#include "framework/script/FieldReader.h"
#include "framework/script/ScriptDocument.h"

#include <QKeySequence>

#include <array>
#include <string_view>

namespace trovik::studio {

namespace {

constexpr std::size_t maxFileBytes = std::size_t{64} << 20;

/// The fields of an event type apart from "type", "time" and "comment".
struct EventType {
    std::string_view name;
    std::vector<std::string_view> required;
    std::vector<std::string_view> optional;
    Input (*read)(const FieldReader& event);
};

PenInput::Kind KindOf(const FieldReader& event) {
    const std::string kind = event.At("kind").Text();
    if (kind == "press") return PenInput::Kind::Press;
    if (kind == "move") return PenInput::Kind::Move;
    if (kind == "release") return PenInput::Kind::Release;
    event.At("kind").Fail("expected \"press\", \"move\" or \"release\", got \"" + kind + "\"");
}

QPointF PositionOf(const FieldReader& event) {
    return {event.At("x").Json().get<double>(), event.At("y").Json().get<double>()};
}

Qt::MouseButton ButtonOf(const FieldReader& event) {
    const std::string button = event.TextOr("button", "left");
    if (button == "middle") return Qt::MiddleButton;
    return button == "right" ? Qt::RightButton : Qt::LeftButton;
}

double DoubleOr(const FieldReader& event, const char* field, double otherwise) {
    return event.Has(field) ? event.At(field).Json().get<double>() : otherwise;
}

Input ReadPen(const FieldReader& event) {
    PenInput pen;
    pen.kind = KindOf(event);
    pen.position = PositionOf(event);
    pen.pressure = DoubleOr(event, "pressure", 0.0);
    if (event.Has("tilt")) {
        const nlohmann::json& tilt = event.At("tilt").Json();
        pen.tilt = {tilt[0].get<double>(), tilt[1].get<double>()};
    }
    pen.rotation = DoubleOr(event, "rotation", 0.0);
    pen.button = ButtonOf(event);
    pen.isEraser = event.FlagOr("eraser", false);
    return pen;
}

Input ReadMouse(const FieldReader& event) {
    return MouseInput{
        KindOf(event), PositionOf(event), ButtonOf(event), event.FlagOr("fromPen", false)};
}

Input ReadWheel(const FieldReader& event) {
    const nlohmann::json& delta = event.At("delta").Json();
    const QPointF exact(delta[0].get<double>(), delta[1].get<double>());
    return WheelInput{PositionOf(event), exact.toPoint()};
}

/// Unlike a shortcut, a key may be a single modifier.
QKeyCombination KeyOf(const FieldReader& event) {
    const QString name = QString::fromStdString(event.At("key").Text());
    for (const int modifier : {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_Meta})
        if (name == KeyName(modifier)) return QKeyCombination::fromCombined(modifier);
    const QKeySequence sequence = QKeySequence::fromString(name, QKeySequence::PortableText);
    if (sequence.count() != 1 || sequence[0].key() == Qt::Key_unknown)
        event.At("key").Fail("expected a key such as \"F\", \"Shift\" or \"Esc\", got \"" +
                             name.toStdString() + "\"");
    return sequence[0];
}

Input ReadKey(const FieldReader& event) {
    KeyInput key;
    const std::string kind = event.At("kind").Text();
    key.key = KeyOf(event);
    key.text = QString::fromStdString(event.TextOr("text", {}));
    if (kind == "move")
        event.At("kind").Fail("expected \"press\", \"release\" or \"tap\", got \"move\"");
    key.kind = kind == "press" ? KeyInput::Kind::Press
               : kind == "tap" ? KeyInput::Kind::Tap
                               : KeyInput::Kind::Release;
    if (key.kind != KeyInput::Kind::Tap && key.key.keyboardModifiers() != Qt::NoModifier)
        event.At("key").Fail("expected a key without modifiers, got \"" + event.At("key").Text() +
                             "\"; record modifiers as separate keys, or use the kind \"tap\"");
    return key;
}

Input ReadStep(const FieldReader& event) {
    nlohmann::json step = event.At("step").Json();
    RemoveComments(step);
    // The message begins with the name, then the pointer within the step.
    const std::string name = "step";
    try {
        step = CheckedStep(step, name);
    } catch (const HostError& error) {
        const std::string message = std::string(error.what()).substr(name.size() + 2);
        const std::size_t end = message.find(": ");
        const std::string pointer = message.substr(0, end);
        event.At("step").FailAt(pointer == "/" ? std::string() : pointer, message.substr(end + 2));
    }
    return StepInput{std::move(step)};
}

Input ReadOpen(const FieldReader& event) {
    if (event.Has("mesh") == event.Has("scene"))
        event.Fail("expected either \"mesh\" or \"scene\"");
    if (event.Has("scene") && event.Has("levels"))
        event.At("levels").Fail("levels can only be added to a mesh, not to a scene");
    return OpenInput{event.TextOr("mesh", {}),
                     event.TextOr("scene", {}),
                     event.Has("levels") ? event.At("levels").Integer() : 0};
}

Input ReadCamera(const FieldReader& event) {
    CameraInput camera;
    camera.eye = event.At("eye").ThreeNumbers();
    camera.target = event.At("target").ThreeNumbers();
    camera.up = event.At("up").ThreeNumbers();
    if (event.Has("fieldOfView")) camera.fieldOfView = event.At("fieldOfView").Number();
    camera.isOrthographic = event.FlagOr("orthographic", false);
    const Vector forward = camera.target - camera.eye;
    if (!((forward & camera.up).Length() > 0.0f))
        event.Fail(
            "the camera's eye must differ from its target, and its up direction must not be "
            "parallel to the view direction");
    return camera;
}

Input ReadResize(const FieldReader& event) {
    const FieldReader size = event.At("viewport");
    return ResizeInput{QSize(size.At(std::size_t{0}).Integer(), size.At(1).Integer())};
}

Input ReadAction(const FieldReader& event) {
    return ActionInput{QString::fromStdString(event.At("id").Text())};
}

Input ReadScreenshot(const FieldReader& event) {
    return ScreenshotInput{QString::fromStdString(event.At("file").Text()),
                           event.FlagOr("window", false)};
}

Input ReadTick(const FieldReader&) { return TickInput(); }
Input ReadWait(const FieldReader&) { return WaitInput(); }

const std::array<EventType, std::variant_size_v<Input>>& EventTypes() {
    static const std::array<EventType, std::variant_size_v<Input>> types{{
        {"pen", {"kind", "x", "y"}, {"pressure", "tilt", "rotation", "button", "eraser"}, ReadPen},
        {"mouse", {"kind", "x", "y"}, {"button", "fromPen"}, ReadMouse},
        {"wheel", {"x", "y", "delta"}, {}, ReadWheel},
        {"key", {"kind", "key"}, {"text"}, ReadKey},
        {"tick", {"time"}, {}, ReadTick},
        {"action", {"id"}, {}, ReadAction},
        {"step", {"step"}, {}, ReadStep},
        {"open", {}, {"mesh", "scene", "levels"}, ReadOpen},
        {"camera", {"eye", "target", "up"}, {"fieldOfView", "orthographic"}, ReadCamera},
        {"resize", {"viewport"}, {}, ReadResize},
        {"wait", {}, {}, ReadWait},
        {"screenshot", {"file"}, {"window"}, ReadScreenshot},
    }};
    return types;
}

bool Contains(const std::vector<std::string_view>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

TimedInput ReadEvent(const FieldReader& event) {
    const std::string name = event.At("type").Text();
    const auto& types = EventTypes();
    const auto type = std::find_if(
        types.begin(), types.end(), [&](const EventType& one) { return one.name == name; });
    for (const std::string_view field : type->required)
        if (!event.Has(std::string(field).c_str()))
            event.Fail("an event of the type \"" + name + "\" needs \"" + std::string(field) +
                       "\"");
    for (const auto& [field, value] : event.Json().items()) {
        const bool isKnown = field == "type" || field == "time" || field == "comment" ||
                             Contains(type->required, field) || Contains(type->optional, field);
        if (!isKnown)
            event.At(field.c_str()).Fail("an event of the type \"" + name + "\" has no such field");
    }
    TimedInput timed;
    if (event.Has("time")) timed.time = event.At("time").Json().get<uint32_t>();
    timed.input = type->read(event);
    return timed;
}

}  // namespace

EventFile ParseEventFile(const std::string& text, const std::string& name) {
    static const JsonSchema schema(EventFileSchema());
    const nlohmann::json json = ParseAgainst(schema, text, name);
    const FieldReader root(json, name, "");
    EventFile file;
    file.path = name;
    const FieldReader size = root.At("viewport");
    file.viewport = {size.At(std::size_t{0}).Integer(), size.At(1).Integer()};
    file.pixelRatio = DoubleOr(root, "pixelRatio", 1.0);
    const FieldReader events = root.At("events");
    file.events.reserve(events.Size());
    for (std::size_t i = 0; i < events.Size(); ++i) file.events.push_back(ReadEvent(events.At(i)));
    return file;
}

EventFile ReadEventFile(const std::string& path) {
    return ParseEventFile(ReadDocument(path, maxFileBytes), DocumentName(path));
}

}  // namespace trovik::studio
