// SPDX-License-Identifier: Apache-2.0
#include "framework/journal/JournalContent.h"

#include "framework/errors/HostError.h"

#include <cmath>
#include <cstring>
#include <filesystem>

namespace trovik {

namespace {

using nlohmann::json;

/// Builds the content record by record, and rejects records that are not allowed where they occur.
class ContentBuilder {
public:
    ContentBuilder(const JournalReader& journal, JournalContent& built)
        : reader(journal), content(built) {}

    void Take(const JournalRecord& next) {
        record = &next;
        const bool isFirst = next.byte == journalHeaderBytes;
        if (isFirst != (next.kind == RecordKind::Base))
            Refuse(isFirst ? "the first record is not a base record"
                           : "there is more than one base record");
        if (content.isClosed) Refuse("a record follows the end of the work");
        switch (next.kind) {
            case RecordKind::Base:
                TakeBase();
                break;
            case RecordKind::Step:
                TakeStep();
                break;
            case RecordKind::Dab:
                TakeDab();
                break;
            case RecordKind::StepDone:
                TakeEnd(false);
                break;
            case RecordKind::StrokeBegin:
                TakeStrokeBegin();
                break;
            case RecordKind::StrokeDab:
                TakeStrokeDab();
                break;
            case RecordKind::StrokeWhole:
                TakeStrokeWhole();
                break;
            case RecordKind::StrokeRevert:
                TakeRevert();
                break;
            case RecordKind::StrokeEnd:
                TakeEnd(true);
                break;
            case RecordKind::Stamp:
                content.stamps.push_back(FileIn(ReadJson()));
                break;
            case RecordKind::Saved:
                TakeSaved();
                break;
            case RecordKind::Past:
                TakePast();
                break;
            case RecordKind::Close:
                TakeClose();
                break;
        }
    }

private:
    [[noreturn]] void Refuse(const std::string& reason) const {
        reader.Fail(record->byte, reason + "; the journal is damaged");
    }

    json ReadJson() const {
        json read = json::parse(record->content.begin(), record->content.end(), nullptr, false);
        if (!read.is_object() && !read.is_array()) Refuse("a record is not valid JSON");
        return read;
    }

    std::string Text(const json& fields, const char* name) const {
        if (!fields.is_object() || !fields.contains(name) || !fields.at(name).is_string())
            Refuse(std::string("a record has no field \"") + name + "\"");
        return fields.at(name).get<std::string>();
    }

    JournalFile FileIn(const json& fields) const {
        JournalFile file{Text(fields, "path"), {Text(fields, "sha256"), 0}};
        if (!fields.contains("bytes") || !fields.at("bytes").is_number_unsigned())
            Refuse("a record has no field \"bytes\"");
        file.content.bytes = fields.at("bytes").get<uint64_t>();
        return file;
    }

    json CarriedIn(const json& fields) const {
        const auto found = fields.find("carried");
        if (found == fields.end()) return nullptr;
        if (!found->is_array()) Refuse("\"carried\" is not a JSON array");
        return *found;
    }

    /// Returns the content of the record as a value. \param rest  receives the bytes that follow
    /// the value; if null, no bytes may follow it.
    template <typename Value>
    Value ReadValue(std::string* rest = nullptr) const {
        const std::string_view bytes = record->content;
        if (bytes.size() < sizeof(Value) || (rest == nullptr && bytes.size() != sizeof(Value)))
            Refuse("a record has " + std::to_string(bytes.size()) +
                   " bytes, which is wrong for its kind");
        Value value;
        std::memcpy(&value, bytes.data(), sizeof value);
        if (rest != nullptr) *rest = std::string(bytes.substr(sizeof value));
        return value;
    }

    void TakeBase() {
        const json fields = ReadJson();
        JournalBase& base = content.base;
        base.script = Text(fields, "script");
        base.program = Text(fields, "program");
        const JournalFile source = FileIn(fields.contains("source") ? fields.at("source") : json());
        base.source = source.path;
        base.content = source.content;
        if (!fields.contains("setup") || !fields.at("setup").is_object())
            Refuse("a record has no field \"setup\"");
        base.setup = fields.at("setup");
        base.carried = CarriedIn(fields);
        if (fields.contains("output")) base.output = Text(fields, "output");
        const auto outside = fields.find("allowOutside");
        base.outsideAllowed = outside != fields.end() && *outside == true;
    }

    JournalStep& OpenStep() {
        if (!inStep) Refuse("step record outside a step");
        return content.steps.back();
    }

    /// Returns the current part of the open stroke, which is not part of a step; starts a new part
    /// if there is none.
    JournalStep& OpenStroke() {
        if (inStep) Refuse("stroke record inside a step");
        if (!inStrokePart) Start(JournalStep());
        inStrokePart = true;
        return content.steps.back();
    }

    void Start(JournalStep step) {
        step.byte = record->byte;
        // A step completes the current part of the stroke.
        if (inStrokePart) content.steps.back().isOver = true;
        inStrokePart = false;
        content.steps.push_back(std::move(step));
    }

    void TakeStep() {
        JournalStep step;
        step.step = ReadJson();
        if (!step.step.is_object() || step.step.empty()) Refuse("a step is not a JSON object");
        if (inStep) Refuse("a step starts before the previous step has ended");
        Start(std::move(step));
        inStep = true;
    }

    void TakeDab() {
        JournalStep& step = OpenStep();
        if (ReadValue<DabMark>().count != step.dabs + 1)
            Refuse("a step has the wrong number of dabs");
        ++step.dabs;
    }

    void TakeEnd(bool ofStroke) {
        JournalStep& step = ofStroke ? OpenStroke() : OpenStep();
        const StepEnd end = ReadValue<StepEnd>(&step.label);
        if (end.dabs != (ofStroke ? strokeDabs : step.dabs))
            Refuse("a step has the wrong number of dabs");
        step.isOver = true;
        step.endsStroke = ofStroke;
        step.cancelled = !ofStroke && end.failed == StepEnd::cancelled;
        step.failed = end.failed != 0 && !step.cancelled;
        step.vertices = end.vertices;
        step.undoBytes = end.undoBytes;
        inStep = false;
        inStrokePart = false;
        if (ofStroke) strokeDabs = 0;
    }

    void TakeStrokeBegin() {
        if (inStep || inStrokePart)
            Refuse("a stroke starts before the previous step or stroke has ended");
        JournalStep& stroke = OpenStroke();
        stroke.start = ReadValue<StrokeStart>(&stroke.label);
        if (stroke.start->modifier > 2) Refuse("a stroke has an unknown modifier");
        strokeDabs = 0;
    }

    void TakeStrokeDab() {
        JournalStep& stroke = OpenStroke();
        StrokeCall call{RecordKind::StrokeDab, ReadValue<StrokeInput>(), {}};
        const StrokeInput& dab = call.dab;
        for (const auto* place :
             {&dab.hitPosition, &dab.hitNormal, &dab.position, &dab.heading, &dab.stampTop})
            for (const float number : *place)
                if (!std::isfinite(number)) Refuse("a dab has a non-finite number");
        if (!std::isfinite(dab.size) || !std::isfinite(dab.pressure) ||
            !std::isfinite(dab.strength))
            Refuse("a dab has a non-finite number");
        stroke.calls.push_back(call);
        ++stroke.dabs;
        ++strokeDabs;
    }

    void TakeStrokeWhole() {
        JournalStep& stroke = OpenStroke();
        StrokeCall call{RecordKind::StrokeWhole, {}, ReadValue<WholeMeshInput>()};
        if (!std::isfinite(call.whole.strength)) Refuse("a strength is not finite");
        stroke.calls.push_back(call);
        ++stroke.dabs;
        ++strokeDabs;
    }

    void TakeRevert() { OpenStroke().calls.push_back({RecordKind::StrokeRevert, {}, {}}); }

    void TakeSaved() {
        if (inStep || inStrokePart) Refuse("a scene is saved inside a step");
        const json fields = ReadJson();
        content.saves.push_back({FileIn(fields), CarriedIn(fields), content.steps.size()});
    }

    void TakePast() {
        json past = ReadJson();
        if (!past.is_array()) Refuse("the list of past steps is not a JSON array");
        for (const json& line : past)
            if (!line.is_object()) Refuse("a past step is not a JSON object");
        content.past = std::move(past);
    }

    void TakeClose() {
        if (inStep) Refuse("the work ends in the middle of a step");
        content.isClosed = true;
    }

    const JournalReader& reader;
    JournalContent& content;
    const JournalRecord* record = nullptr;
    bool inStep = false;
    /// Whether the most recent step is a stroke, or a part of one, that has not ended.
    bool inStrokePart = false;
    /// Number of dabs in all parts of the open stroke.
    uint32_t strokeDabs = 0;
};

constexpr std::size_t maxLabelBytes = 60;

/// Returns a short label for the step: its command and main parameters.
std::string LabelOf(const JournalStep& step) {
    std::string text;
    if (step.step.is_null() || step.step.contains("stroke")) {
        text = step.label.empty() ? "stroke" : "stroke " + step.label;
    } else if (step.step.contains("tool") && step.step.at("tool").is_string()) {
        text = "tool " + step.step.at("tool").get<std::string>();
    } else {
        const auto first = step.step.begin();
        text =
            first.key() + " " + first.value().dump(-1, ' ', true, json::error_handler_t::replace);
    }
    for (char& letter : text)
        if (letter >= 0 && letter < ' ') letter = ' ';
    if (text.size() <= maxLabelBytes) return text;
    std::size_t end = maxLabelBytes;
    // The text must not be cut inside a multi-byte character.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0u) == 0x80u) --end;
    return text.substr(0, end) + "...";
}

}  // namespace

json ToJson(const JournalFile& file) {
    return {{"path", file.path}, {"sha256", file.content.sha256}, {"bytes", file.content.bytes}};
}

json ToJson(const JournalBase& base) {
    json fields = {{"program", base.program},
                   {"script", base.script},
                   {"setup", base.setup},
                   {"source", ToJson(JournalFile{base.source, base.content})}};
    if (!base.carried.is_null()) fields["carried"] = base.carried;
    if (!base.output.empty()) fields["output"] = base.output;
    if (base.outsideAllowed) fields["allowOutside"] = true;
    return fields;
}

JournalContent ReadJournal(const std::string& path, bool untilDamage) {
    const JournalReader reader(path);
    if (!reader.Damage().empty() && !untilDamage) {
        throw HostError(reader.Damage() +
                        "; use --until-damage to read the part before the damage (" +
                        std::to_string(reader.Records().size()) + " records)");
    }
    JournalContent content;
    ContentBuilder builder(reader, content);
    for (const JournalRecord& record : reader.Records()) builder.Take(record);
    if (reader.Records().empty()) reader.Fail(journalHeaderBytes, "the journal has no base record");
    for (const std::string& note : {reader.Damage(), reader.TruncatedEnd()})
        if (!note.empty()) content.notes.push_back(note);
    return content;
}

std::string KeptSourceOf(const std::string& journalPath, const std::string& source) {
    return journalPath + ".base" + std::filesystem::path(source).extension().string();
}

// A step that pushed several undo steps counts as one, so a position may be rejected needlessly,
// but never accepted wrongly.
bool CanStartAt(const JournalContent& content, std::size_t step) {
    int64_t undoable = 0, redoable = 0;
    for (; step < content.steps.size(); ++step) {
        const JournalStep& next = content.steps[step];
        const auto count = [&](const char* command) -> int64_t {
            if (!next.step.is_object() || !next.step.contains(command)) return 0;
            const json& times = next.step.at(command);
            return times.is_number_integer() ? times.get<int64_t>() : 1;
        };
        const int64_t undone = count("undo"), redone = count("redo");
        if ((undone != 0 || redone != 0) && next.failed) return false;
        if (undone > undoable) return false;
        undoable -= undone;
        redoable += undone;
        if (redone > redoable) return false;
        redoable -= redone;
        undoable += redone;
        if (next.step.is_object() && next.step.contains("reset")) undoable = redoable = 0;
        if (next.undoBytes == 0 || undone != 0 || redone != 0) continue;
        ++undoable;
        redoable = 0;
    }
    return true;
}

json SummaryOf(const JournalStep& step) {
    return {{"step", LabelOf(step)},
            {"dabs", step.dabs},
            {"vertices", step.vertices},
            {"undoBytes", step.undoBytes},
            {"finished", step.isOver && !step.failed && !step.cancelled}};
}

}  // namespace trovik
