// SPDX-License-Identifier: Apache-2.0
#include "framework/script/commands/StrokeParameters.h"

#include <cmath>
#include <limits>

namespace trovik {

namespace {

/// The milliseconds that PenSamples converts to exactly these seconds.
double Milliseconds(double seconds) {
    const double near = seconds * 1000.0;
    for (double one = near, other = near; other < near + 1.0;) {
        if (one / 1000.0 == seconds) return one;
        if (other / 1000.0 == seconds) return other;
        one = std::nextafter(one, -1.0);
        other = std::nextafter(other, std::numeric_limits<double>::max());
    }
    return near;
}

}  // namespace

std::vector<PathSample> ReadPathSamples(const FieldReader& list, std::size_t numbers) {
    std::vector<PathSample> samples;
    samples.reserve(list.Size());
    for (std::size_t i = 0; i < list.Size(); ++i) {
        const FieldReader given = list.At(i);
        PathSample sample;
        float* position[3] = {&sample.position.x, &sample.position.y, &sample.position.z};
        for (std::size_t k = 0; k < numbers; ++k) *position[k] = given.At(k).Number();
        if (given.Size() > numbers) {
            sample.pressure = given.At(numbers).Number();
            if (sample.pressure < 0.0f || sample.pressure > 1.0f)
                given.At(numbers).Fail("pressure must be between 0 and 1");
        }
        samples.push_back(sample);
    }
    return samples;
}

nlohmann::json WritePathSamples(const std::vector<PathSample>& list, std::size_t numbers) {
    nlohmann::json all = nlohmann::json::array();
    for (const PathSample& sample : list) {
        const float position[3] = {sample.position.x, sample.position.y, sample.position.z};
        nlohmann::json one = nlohmann::json::array();
        for (std::size_t k = 0; k < numbers; ++k) one.push_back(static_cast<double>(position[k]));
        one.push_back(static_cast<double>(sample.pressure));
        all.push_back(std::move(one));
    }
    return all;
}

nlohmann::json FieldValue<PenSampleList>::Write(const PenSampleList& value) {
    nlohmann::json all = nlohmann::json::array();
    for (const PathSample& sample : value.list) {
        nlohmann::json one = nlohmann::json::array({static_cast<double>(sample.position.x),
                                                    static_cast<double>(sample.position.y),
                                                    static_cast<double>(sample.pressure),
                                                    Milliseconds(sample.time)});
        if (sample.tilt != Vector()) {
            one.push_back(static_cast<double>(sample.tilt.x));
            one.push_back(static_cast<double>(sample.tilt.y));
        }
        all.push_back(std::move(one));
    }
    return all;
}

}  // namespace trovik
