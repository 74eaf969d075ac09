// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/DocumentStroke.h"
#include "framework/script/Command.h"
#include "framework/script/PenStream.h"

namespace trovik {

template <>
struct EnumNames<BrushOperation::Modifier> {
    static constexpr std::pair<const char*, BrushOperation::Modifier> names[] = {
        {"none", BrushOperation::ModifierNone},
        {"smooth", BrushOperation::ModifierSmooth},
        {"invert", BrushOperation::ModifierInvert}};
};

/// Samples, each with `numbers` coordinates and an optional pressure.
template <std::size_t numbers>
struct PathSamples {
    std::vector<PathSample> list;
};

/// \throw HostError for a pressure outside of 0 to 1.
std::vector<PathSample> ReadPathSamples(const FieldReader& list, std::size_t numbers);
nlohmann::json WritePathSamples(const std::vector<PathSample>& list, std::size_t numbers);

template <std::size_t numbers>
struct FieldValue<PathSamples<numbers>> {
    static bool Accepts(const nlohmann::json& json) { return json.is_array(); }
    static void Read(const FieldReader& from, PathSamples<numbers>& value) {
        value.list = ReadPathSamples(from, numbers);
    }
    static nlohmann::json Write(const PathSamples<numbers>& value) {
        return WritePathSamples(value.list, numbers);
    }
    static nlohmann::json Describe() {
        return Alternative("array", Alternative("array", Alternative("number")));
    }
};

/// Pen samples with timestamps; see PenSamples.
struct PenSampleList {
    std::vector<PathSample> list;
};

template <>
struct FieldValue<PenSampleList> {
    static bool Accepts(const nlohmann::json& json) { return json.is_array(); }
    static void Read(const FieldReader& from, PenSampleList& value) {
        value.list = PenSamples(from);
    }
    static nlohmann::json Write(const PenSampleList& value);
    static nlohmann::json Describe() {
        return Alternative("array", Alternative("array", Alternative("number")));
    }
};

struct DabParameters {
    uint64_t face = 0;
    /// Mesh-local; the centre of the face if missing.
    std::optional<Vector> point;
    std::optional<Vector> normal;
    /// In world space.
    std::optional<Vector> position;
    std::optional<float> radius;
    std::optional<float> pressure;
    std::optional<float> strength;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("face", face);
        visit("point", point);
        visit("normal", normal);
        visit("position", position);
        visit("radius", radius);
        visit("pressure", pressure);
        visit("strength", strength);
    }
};

struct WholeMeshParameters {
    float strength = 0.0f;
    std::optional<bool> byFacing;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("strength", strength);
        visit("byFacing", byFacing);
    }
};

struct SnapParameters {
    /// Control points; each has as many coordinates as the samples of the stroke.
    std::vector<std::vector<float>> curve;
    float distance = 0.0f;
    std::optional<bool> smooth;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("curve", curve);
        visit("distance", distance);
        visit("smooth", smooth);
    }
};

struct PathParameters {
    std::optional<bool> filter;
    std::optional<bool> interactive;
    std::optional<float> smoothing;
    std::optional<float> stabiliser;
    std::optional<bool> line;
    std::optional<bool> curve;
    std::optional<SnapParameters> snap;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("filter", filter);
        visit("interactive", interactive);
        visit("smoothing", smoothing);
        visit("stabiliser", stabiliser);
        visit("line", line);
        visit("curve", curve);
        visit("snap", snap);
    }
};

struct StrokeParameters {
    std::optional<BrushOperation::Modifier> modifier;
    std::optional<uint64_t> seed;
    std::optional<std::vector<DabParameters>> dabs;
    /// In world space.
    std::optional<PathSamples<3>> surface;
    /// In world space; for tools whose strokes follow the pointer off the surface.
    std::optional<PathSamples<3>> points;
    /// In viewport pixels.
    std::optional<PathSamples<2>> pointer;
    /// A file name, or the samples.
    std::optional<std::variant<std::string, PenSampleList>> pen;
    std::optional<PathParameters> path;
    std::optional<WholeMeshParameters> wholeMesh;
    std::optional<bool> open;
    std::optional<bool> goesOn;

    template <typename Visitor>
    void Fields(Visitor& visit) {
        visit("modifier", modifier);
        visit("seed", seed);
        visit("dabs", dabs);
        visit("surface", surface);
        visit("points", points);
        visit("pointer", pointer);
        visit("pen", pen);
        visit("path", path);
        visit("wholeMesh", wholeMesh);
        visit("open", open);
        visit("continue", goesOn);
    }

    bool HasPath() const { return surface || points || pointer || pen; }
    /// Whether samples have three coordinates, in world space.
    bool IsInWorldSpace() const { return surface || points; }
};

/// Applies the dabs along the stroke's path, or nothing if it has none.
void ApplyPath(CommandContext& context, const StrokeParameters& stroke);
/// Checks the path and reads its sample file.
void CheckPath(const CommandContext& context, const StrokeParameters& stroke);

}  // namespace trovik
