// SPDX-License-Identifier: Apache-2.0
#include "framework/json/JsonText.h"

#include "framework/errors/HostError.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

namespace trovik {

namespace {

using nlohmann::json;

constexpr std::size_t maxDepth = 64;

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

bool IsNameLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool StartsAt(const std::string& text, std::size_t at, std::string_view word) {
    return text.compare(at, word.size(), word) == 0;
}

/// Returns "line L, column C" for a byte offset. Columns are counted in characters.
std::string LineAndColumn(const std::string& text, std::size_t at) {
    std::size_t line = 1;
    std::size_t column = 1;
    for (std::size_t i = 0; i < at; ++i) {
        if (text[i] == '\n') {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(text[i]) & 0xc0) != 0x80) {
            ++column;
        }
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

/// Returns the parser's error message without its prefix and without the quoted input, which may be
/// long or not UTF-8.
std::string PlainReason(std::string reason) {
    if (const auto from = reason.find("] "); from != std::string::npos) reason.erase(0, from + 2);
    if (const auto from = reason.find(" - "); from != std::string::npos) reason.erase(0, from + 3);
    const std::size_t quoted = reason.find("; last read: '");
    if (quoted != std::string::npos) {
        const std::size_t end = reason.rfind("'; expected");
        reason.erase(
            quoted,
            end != std::string::npos && end > quoted ? end + 1 - quoted : std::string::npos);
    }
    for (char& c : reason)
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    constexpr std::size_t maxBytes = 200;
    return reason.substr(0, maxBytes);
}

/// Returns the reason why the text is not JSON, with specific messages for the most common
/// mistakes.
/// \param at  the first byte of the faulty token.
std::string SyntaxReason(const std::string& text, std::size_t at, const std::string& parserReason) {
    std::string plain = PlainReason(parserReason);
    if (at >= text.size()) return "the file ends too early: " + plain;
    const char c = text[at];
    if (c == '#' || StartsAt(text, at, "//") || StartsAt(text, at, "/*"))
        return "JSON has no comments; use a \"comment\" field";
    std::size_t before = at;
    while (before > 0 && IsSpace(text[before - 1])) --before;
    const char previous = before == 0 ? '\0' : text[before - 1];
    if ((c == '}' || c == ']') && previous == ',')
        return std::string("there is a comma before '") + c + "'";
    if (c == '\'') return "strings must be in double quotes";
    const bool startsName = IsNameLetter(c) && !(c >= '0' && c <= '9');
    if (startsName) {
        std::size_t end = at;
        while (end < text.size() && IsNameLetter(text[end]) && end - at < 40) ++end;
        const std::string word = text.substr(at, end - at);
        if (previous == '{' || (previous == ',' && plain.find("string") != std::string::npos))
            return "the field name " + word + " needs double quotes";
        return word + " is not a JSON value; strings must be in double quotes";
    }
    if (plain.rfind("unexpected", 0) == 0 && plain.find("expected '") != std::string::npos &&
        (c == '"' || c == '{' || c == '['))
        return "a comma is missing before this; " + plain;
    return plain;
}

/// Builds the document from the parser's events.
class DocumentBuilder final : public nlohmann::json_sax<json> {
public:
    DocumentBuilder(const std::string& parsed,
                    const std::string& documentName,
                    std::vector<JsonFault>* repeated)
        : text(parsed), name(documentName), faults(repeated) {}

    json root;

    bool null() override { return Put(json()); }
    bool boolean(bool value) override { return Put(json(value)); }
    bool number_integer(number_integer_t value) override { return Put(json(value)); }
    bool number_unsigned(number_unsigned_t value) override { return Put(json(value)); }
    bool number_float(number_float_t value, const string_t&) override { return Put(json(value)); }
    bool string(string_t& value) override { return Put(json(std::move(value))); }
    bool binary(binary_t& value) override { return Put(json(std::move(value))); }
    bool start_object(std::size_t) override { return Open(json::object()); }
    bool start_array(std::size_t) override { return Open(json::array()); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }

    bool key(string_t& field) override {
        levels.back().key = std::move(field);
        levels.back().isRepeated = levels.back().value->contains(levels.back().key);
        if (!levels.back().isRepeated) return true;
        const JsonFault fault{Pointer(), "the field is given more than once"};
        if (faults == nullptr) throw HostError(FaultMessage(name, fault));
        faults->push_back(fault);
        return true;
    }

    bool parse_error(std::size_t position,
                     const std::string& token,
                     const nlohmann::detail::exception& error) override {
        // The parser's position is the last byte that it read, counted from 1. For words and
        // strings, the first byte of the token is needed instead; `token` starts with the most
        // recent string or number.
        std::size_t at = std::min(position == 0 ? 0 : position - 1, text.size());
        const bool isString = at < text.size() && text[at] == '"' && token.size() > 1 &&
                              token.size() <= at + 1 && token.front() == '"' &&
                              StartsAt(text, at + 1 - token.size(), token);
        if (isString) at = at + 1 - token.size();
        while (at > 0 && at < text.size() && IsNameLetter(text[at]) && IsNameLetter(text[at - 1]))
            --at;
        throw HostError(name + ": " + LineAndColumn(text, at) +
                        ": not valid JSON: " + SyntaxReason(text, at, error.what()));
    }

private:
    struct Level {
        json* value;
        std::string key;
        bool isRepeated = false;
    };

    /// Returns the JSON Pointer to the next value. The innermost array does not contain this value
    /// yet; in each outer array, it is inside the last item.
    std::string Pointer() const {
        std::string pointer;
        for (const Level& level : levels) {
            const bool isInnermost = &level == &levels.back();
            pointer = level.value->is_object()
                          ? FieldPointer(pointer, level.key)
                          : ItemPointer(pointer, level.value->size() - (isInnermost ? 0 : 1));
        }
        return pointer;
    }

    bool Put(json&& value) {
        Add(std::move(value));
        return true;
    }

    bool Open(json&& value) {
        if (levels.size() == maxDepth)
            throw HostError(FaultMessage(
                name, {Pointer(), "more than " + std::to_string(maxDepth) + " nested values"}));
        levels.push_back({Add(std::move(value)), {}});
        return true;
    }

    bool Close() {
        levels.pop_back();
        return true;
    }

    json* Add(json&& value) {
        if (levels.empty()) {
            root = std::move(value);
            return &root;
        }
        Level& level = levels.back();
        if (level.value->is_array()) {
            level.value->push_back(std::move(value));
            return &level.value->back();
        }
        if (!level.isRepeated) return &((*level.value)[level.key] = std::move(value));
        // The value is parsed to the end and then discarded.
        dropped.push_back(std::make_unique<json>(std::move(value)));
        return dropped.back().get();
    }

    const std::string& text;
    const std::string& name;
    std::vector<JsonFault>* faults;
    std::vector<Level> levels;
    std::vector<std::unique_ptr<json>> dropped;
};

}  // namespace

bool IsStandardInput(const std::string& path) { return path == "-"; }

std::string DocumentName(const std::string& path) {
    return IsStandardInput(path) ? "standard input" : path;
}

std::string ReadDocument(const std::string& path, std::size_t maxBytes) {
    const std::string name = DocumentName(path);
    const auto fail = [&name](int systemError) {
        throw HostError(name +
                        ": cannot read: " + std::strerror(systemError == 0 ? EIO : systemError));
    };
    const auto close = [](std::FILE* file) { return file == stdin ? 0 : std::fclose(file); };
    errno = 0;
    const std::unique_ptr<std::FILE, decltype(close)> file(
        IsStandardInput(path) ? stdin : std::fopen(path.c_str(), "rbe"), close);
    if (file == nullptr) fail(errno);
    std::string text;
    constexpr std::size_t piece = std::size_t{1} << 16;
    while (text.size() <= maxBytes) {
        const std::size_t before = text.size();
        text.resize(before + piece);
        const std::size_t count = std::fread(text.data() + before, 1, piece, file.get());
        text.resize(before + count);
        if (count == piece) continue;
        if (std::ferror(file.get()) != 0) fail(errno);
        break;
    }
    if (text.size() > maxBytes) {
        constexpr std::size_t mebibyte = std::size_t{1} << 20;
        throw HostError(name + ": larger than " +
                        (maxBytes % mebibyte == 0 ? std::to_string(maxBytes / mebibyte) + " MiB"
                                                  : std::to_string(maxBytes) + " bytes"));
    }
    return text;
}

json ParseDocument(const std::string& text,
                   const std::string& name,
                   std::vector<JsonFault>* repeated) {
    const std::string_view mark = "\xef\xbb\xbf";
    const std::size_t start = StartsAt(text, 0, mark) ? mark.size() : 0;
    if (std::all_of(text.begin() + static_cast<std::ptrdiff_t>(start), text.end(), IsSpace))
        throw HostError(name + ": not valid JSON: the file is empty");
    if (StartsAt(text, 0, "\xff\xfe") || StartsAt(text, 0, "\xfe\xff"))
        throw HostError(name + ": not valid JSON: the text is UTF-16; JSON files are UTF-8");
    DocumentBuilder builder(text, name, repeated);
    json::sax_parse(text, &builder);
    return std::move(builder.root);
}

void RemoveComments(json& document) {
    if (document.is_object()) document.erase("comment");
    if (!document.is_structured()) return;
    for (json& value : document)
        if (value.is_structured()) RemoveComments(value);
}

}  // namespace trovik
