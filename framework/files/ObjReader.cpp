// SPDX-License-Identifier: Apache-2.0
//
// tinyobjloader takes the statements apart and keeps the face order across groups when it is used
// through its callbacks. Three things it does not do, so they are done before it sees a line: its
// numbers are not always the floats nearest to their text, it takes malformed indices for other
// ones without a word, and it does not tell line numbers.
#include "framework/errors/HostError.h"
#include "framework/files/FaceCorners.h"
#include "framework/files/InputFile.h"
#include "framework/files/NumberText.h"
#include "framework/files/PolygonMesh.h"

#include <tiny_obj_loader.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <istream>
#include <optional>
#include <span>
#include <streambuf>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace trovik {

namespace {

/// Room for a face of as many corners as are allowed, each with three numbers of ten digits.
constexpr std::size_t MaxLineBytes = std::size_t{64} << 20;

constexpr std::string_view Blanks = " \t";

/// Takes the next word off the front of `text`; empty at its end.
std::string_view TakeWord(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(Blanks));
    text.remove_prefix(word.size());
    return word;
}

std::string Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    return std::string(text.substr(first, text.find_last_not_of(Blanks) - first + 1));
}

/// True for `v`, `v/t`, `v//n` and `v/t/n` of whole numbers that tinyobjloader's int can hold,
/// with v other than 0. A number after a slash may be missing, as some exporters leave it.
bool IsCorner(std::string_view word) {
    for (int part = 0; part < 3; ++part) {
        const std::string_view number = word.substr(0, word.find('/'));
        if (!number.empty() || part == 0) {
            std::int32_t index = 0;
            const char* const end = number.data() + number.size();
            const auto [used, error] = std::from_chars(number.data(), end, index);
            if (used != end || error != std::errc() || (part == 0 && index == 0)) {
                return false;
            }
        }
        word.remove_prefix(number.size());
        if (word.empty()) {
            return true;
        }
        word.remove_prefix(1);
    }
    return false;
}

/// Gathers the mesh, and hands tinyobjloader one checked face, object or group line at a time.
class ObjSource : public std::streambuf {
public:
    explicit ObjSource(const std::string& path) : file(path) {}

    PolygonMesh Read() {
        tinyobj::callback_t callbacks;
        callbacks.index_cb = [](void* source, tinyobj::index_t* corners, int count) {
            static_cast<ObjSource*>(source)->AddFace(corners, static_cast<std::size_t>(count));
        };
        callbacks.object_cb = [](void* source, const char* name) {
            static_cast<ObjSource*>(source)->NameBy(name, true);
        };
        callbacks.group_cb = [](void* source, const char** names, int count) {
            if (count > 0) {
                static_cast<ObjSource*>(source)->NameBy(names[0], false);
            }
        };
        std::istream stream(this);
        tinyobj::LoadObjWithCallback(stream, callbacks, this);
        if (!trouble.empty()) {
            throw HostError(trouble);
        }
        if (farthestIndex && *farthestIndex >= mesh.positions.size()) {
            line = farthestLine;
            Refuse(OutOfRange(static_cast<std::int64_t>(*farthestIndex) + 1));
            throw HostError(trouble);
        }
        if (!normalsFit || mesh.normals.size() != mesh.positions.size()) {
            mesh.normals.clear();
        }
        CheckPolygonMesh(mesh, file.Path());
        return std::move(mesh);
    }

protected:
    /// Errors are kept for Read and end the stream, since nothing is thrown through the loader.
    int_type underflow() override {
        try {
            while (trouble.empty() && NextStatement()) {
                std::string_view rest = current;
                const std::string_view keyword = TakeWord(rest);
                if (keyword == "v") {
                    AddVector(rest, "vertex", mesh.positions);
                } else if (keyword == "vn") {
                    AddVector(rest, "normal", mesh.normals);
                } else if (keyword == "o" || keyword == "g" ||
                           (keyword == "f" && CheckFaceText(rest))) {
                    return HandOut();
                }
            }
        } catch (const HostError& error) {
            trouble = error.what();
        }
        return traits_type::eof();
    }

private:
    /// Steps to the next statement: a line, with those that a backslash at its end ties to it.
    bool NextStatement() {
        joined.clear();
        bool isJoined = false;
        while (NextLine()) {
            const bool goesOn = !current.empty() && current.back() == '\\';
            if (!goesOn && !isJoined) {
                return true;
            }
            isJoined = true;
            joined += current.substr(0, current.size() - (goesOn ? 1 : 0));
            if (joined.size() > MaxLineBytes) {
                throw HostError(file.Path() + ", line " + std::to_string(line) +
                                ": the statement is too long");
            }
            if (!goesOn) {
                break;
            }
            joined += ' ';
        }
        current = joined;
        return isJoined;
    }

    /// Lines end in LF, CR LF, or CR alone as in files of old.
    bool NextLine() {
        if (pending.empty() && !file.NextLine(pending, MaxLineBytes)) {
            return false;
        }
        ++line;
        const std::size_t lineEnd = pending.find('\r');
        current = pending.substr(0, lineEnd);
        pending.remove_prefix(lineEnd == std::string_view::npos ? pending.size() : lineEnd + 1);
        if (current.find('\0') != std::string_view::npos) {
            throw HostError(file.Path() + ", line " + std::to_string(line) +
                            ": a zero byte, so this is no text file");
        }
        return true;
    }

    int_type HandOut() {
        handedOut.assign(current);
        handedOut += '\n';
        setg(handedOut.data(), handedOut.data(), handedOut.data() + handedOut.size());
        return traits_type::to_int_type(handedOut.front());
    }

    void Refuse(const std::string& reason) {
        if (trouble.empty()) {
            trouble = file.Path() + ", line " + std::to_string(line) + ": " + reason;
        }
    }

    void AddVector(std::string_view text,
                   const char* what,
                   std::vector<std::array<float, 3>>& vectors) {
        std::array<float, 3> vector = {};
        for (float& coordinate : vector) {
            const std::string_view word = TakeWord(text);
            if (word.empty()) {
                return Refuse(std::string(what) + " has fewer than three coordinates");
            }
            if (!ParseFloat(word, coordinate)) {
                return Refuse(std::string(what) + " coordinate '" +
                              std::string(word.substr(0, 40)) + "' is not a number");
            }
            if (!std::isfinite(coordinate)) {
                return Refuse(std::string(what) + " coordinate '" +
                              std::string(word.substr(0, 40)) + "' is not finite");
            }
        }
        vectors.push_back(vector);
    }

    bool CheckFaceText(std::string_view text) {
        std::size_t corners = 0;
        for (std::string_view word = TakeWord(text); !word.empty(); word = TakeWord(text)) {
            if (!IsCorner(word)) {
                Refuse("face corner '" + std::string(word.substr(0, 40)) +
                       "' is none of v, v/vt, v//vn, v/vt/vn with whole numbers other than 0");
                return false;
            }
            ++corners;
        }
        if (corners < 3) {
            Refuse("face has " + std::to_string(corners) + " corners, but 3 are needed");
        } else if (corners > maxFaceCorners) {
            Refuse("face has " + std::to_string(corners) + " corners, but at most " +
                   std::to_string(maxFaceCorners) + " are read");
        }
        return trouble.empty();
    }

    std::string OutOfRange(std::int64_t index) const {
        return "face names vertex " + std::to_string(index) + ", but only " +
               std::to_string(mesh.positions.size()) + " vertices are defined";
    }

    void AddFace(const tinyobj::index_t* corners, std::size_t count) {
        const std::size_t first = mesh.faceVertices.size();
        for (std::size_t corner = 0; corner < count; ++corner) {
            const std::int64_t written = corners[corner].vertex_index;
            const std::int64_t vertex = FromStart(written, mesh.positions.size());
            if (vertex < 0) {
                return Refuse(OutOfRange(written));
            }
            const auto index = static_cast<std::uint32_t>(vertex);
            // A vertex may come after the faces that name it, so its absence shows at the end.
            if (!farthestIndex || index > *farthestIndex) {
                farthestIndex = index;
                farthestLine = line;
            }
            normalsFit = normalsFit &&
                         FromStart(corners[corner].normal_index, mesh.normals.size()) == vertex;
            mesh.faceVertices.push_back(index);
        }
        mesh.faceSizes.push_back(static_cast<std::uint32_t>(count));
        if (const auto repeated = RepeatedVertex(std::span(mesh.faceVertices).subspan(first))) {
            Refuse("face names vertex " + std::to_string(std::uint64_t{*repeated} + 1) + " twice");
        }
    }

    /// What a written index counts from 0; negative where nothing is named.
    static std::int64_t FromStart(std::int64_t written, std::size_t definedSoFar) {
        return written > 0   ? written - 1
               : written < 0 ? static_cast<std::int64_t>(definedSoFar) + written
                             : -1;
    }

    void NameBy(std::string_view name, bool isObject) {
        if ((isObject && !namedByObject) || mesh.name.empty()) {
            mesh.name = Trimmed(name);
            namedByObject = isObject && !mesh.name.empty();
        }
    }

    InputFile file;
    std::uint64_t line = 0;
    std::string_view pending;
    std::string_view current;
    std::string joined;
    std::string handedOut;
    std::string trouble;

    PolygonMesh mesh;
    std::optional<std::uint32_t> farthestIndex;
    std::uint64_t farthestLine = 0;
    bool normalsFit = true;
    bool namedByObject = false;
};

}  // namespace

PolygonMesh ReadObj(const std::string& path) { return ObjSource(path).Read(); }

}  // namespace trovik
