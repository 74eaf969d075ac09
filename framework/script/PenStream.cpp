// SPDX-License-Identifier: Apache-2.0
#include "framework/script/PenStream.h"

#include "framework/errors/HostError.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace trovik {

namespace {

constexpr std::size_t largestFile = std::size_t{16} << 20;
/// An hour: what a stroke's airbrush would lay in more is no stroke any more.
constexpr double longestTime = 3.6e6;
/// Rounding of a pen that lies flat.
constexpr float longestTilt = 1.001f;

PathSample SampleOf(const FieldReader& numbers) {
    const nlohmann::json& json = numbers.Json();
    if (!json.is_array() || (json.size() != 4 && json.size() != 6))
        numbers.Fail(
            "a sample is [x, y, pressure, milliseconds] or has the two numbers of the tilt too");
    for (std::size_t i = 0; i < json.size(); ++i)
        if (!json[i].is_number()) numbers.At(i).Fail("a number is needed");
    PathSample sample;
    sample.place = {numbers.At(std::size_t{0}).Number(), numbers.At(1).Number(), 0.0f};
    sample.pressure = numbers.At(2).Number();
    if (sample.pressure < 0.0f || sample.pressure > 1.0f)
        numbers.At(2).Fail("pressure lies between 0 and 1");
    const auto milliseconds = json[3].get<double>();
    if (!(milliseconds >= 0.0 && milliseconds <= longestTime))
        numbers.At(3).Fail("times lie between 0 and 3600000 milliseconds");
    sample.time = milliseconds / 1000.0;
    if (json.size() == 6) {
        sample.tilt = {numbers.At(4).Number(), numbers.At(5).Number(), 0.0f};
        if (!(sample.tilt.Length() <= longestTilt))
            numbers.At(4).Fail("the tilt is no longer than 1");
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
    nlohmann::json json;
    try {
        json = nlohmann::json::parse(text);
    } catch (const nlohmann::json::exception& error) {
        std::string reason = error.what();
        for (char& c : reason)
            if (c == '\n' || c == '\r') c = ' ';
        throw HostError(name + ": not valid JSON: " + reason);
    }
    const FieldReader stream(json, name, "");
    if (!json.is_object() || !stream.Has("samples"))
        stream.Fail("a pointer stream is an object with \"samples\"");
    for (const auto& [key, value] : json.items())
        if (key != "samples" && key != "description")
            stream.At(key.c_str()).Fail("unknown field; there are samples, description");
    const FieldReader samples = stream.At("samples");
    if (!samples.Json().is_array() || samples.Size() == 0)
        samples.Fail("a pointer stream has samples");
    return PenSamples(samples);
}

std::vector<PathSample> ReadPenStream(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(largestFile + 1, '\0');
    errno = 0;
    if (file) file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (file.bad() || !file.is_open() || file.gcount() == 0)
        throw HostError(path + ": cannot read: " + std::strerror(errno == 0 ? EIO : errno));
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (text.size() > largestFile) throw HostError(path + ": larger than 16 MiB");
    return ParsePenStream(text, path);
}

}  // namespace trovik
