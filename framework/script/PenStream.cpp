// SPDX-License-Identifier: Apache-2.0
#include "framework/script/PenStream.h"

#include "framework/json/JsonSchema.h"
#include "framework/json/JsonText.h"
#include "framework/script/ScriptDocument.h"

namespace trovik {

namespace {

constexpr std::size_t maxPenFileBytes = std::size_t{16} << 20;
/// One hour: an upper bound for the duration of a stroke, which also limits the dabs of an
/// airbrush.
constexpr double maxMilliseconds = 3.6e6;
/// Allows for rounding when a pen lies flat.
constexpr float maxTiltLength = 1.001f;

PathSample SampleOf(const FieldReader& numbers) {
    const nlohmann::json& json = numbers.Json();
    // The schema accepts 4 to 6 numbers.
    if (json.size() == 5)
        numbers.Fail(
            "a sample must be [x, y, pressure, milliseconds], optionally with two numbers for the "
            "tilt");
    PathSample sample;
    sample.position = {numbers.At(std::size_t{0}).Number(), numbers.At(1).Number(), 0.0f};
    sample.pressure = numbers.At(2).Number();
    if (sample.pressure < 0.0f || sample.pressure > 1.0f)
        numbers.At(2).Fail("pressure must be between 0 and 1");
    const auto milliseconds = json[3].get<double>();
    if (!(milliseconds >= 0.0 && milliseconds <= maxMilliseconds))
        numbers.At(3).Fail("times must be between 0 and 3600000 milliseconds");
    sample.time = milliseconds / 1000.0;
    if (json.size() == 6) {
        sample.tilt = {numbers.At(4).Number(), numbers.At(5).Number(), 0.0f};
        if (!(sample.tilt.Length() <= maxTiltLength))
            numbers.At(4).Fail("the length of the tilt must be at most 1");
    }
    return sample;
}

}  // namespace

std::vector<PathSample> PenSamples(const FieldReader& list) {
    std::vector<PathSample> samples;
    samples.reserve(list.Size());
    for (std::size_t i = 0; i < list.Size(); ++i) samples.push_back(SampleOf(list.At(i)));
    return samples;
}

std::vector<PathSample> ParsePenStream(const std::string& text, const std::string& name) {
    static const JsonSchema schema(PenStreamSchema());
    const nlohmann::json json = ParseAgainst(schema, text, name);
    return PenSamples(FieldReader(json, name, "").At("samples"));
}

std::vector<PathSample> ReadPenStream(const std::string& path) {
    return ParsePenStream(ReadDocument(path, maxPenFileBytes), path);
}

}  // namespace trovik
