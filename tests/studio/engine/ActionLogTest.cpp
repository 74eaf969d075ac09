// SPDX-License-Identifier: Apache-2.0
#include "engine/ActionLog.h"
#include "engine/EngineJob.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <bit>
#include <fstream>

namespace trovik::studio {

namespace {

std::vector<PenPoint> Points(bool isTilted) {
    std::vector<PenPoint> points;
    for (int i = 0; i < 1000; ++i) {
        PenPoint point;
        point.x = 0.1f * static_cast<float>(i);
        point.y = 1.0f / static_cast<float>(i + 3);
        point.pressure = 0.001f * static_cast<float>(i);
        if (isTilted && i % 3 == 0) point.tiltX = 0.1f;
        if (isTilted && i % 5 == 0) point.tiltY = -0.7f;
        point.milliseconds = 7.1 * i;
        points.push_back(point);
    }
    return points;
}

TEST(PackedSamples, StoreEverySampleUnchanged) {
    for (const bool isTilted : {false, true}) {
        const std::vector<PenPoint> points = Points(isTilted);
        const PackedSamples packed(points);
        ASSERT_EQ(packed.Count(), points.size());
        EXPECT_EQ(packed.Bytes(), points.size() * (isTilted ? 28 : 20));
        for (std::size_t i = 0; i < points.size(); ++i) {
            const PenPoint point = packed.At(i);
            EXPECT_EQ(std::bit_cast<uint64_t>(point.milliseconds),
                      std::bit_cast<uint64_t>(points[i].milliseconds));
            for (const auto member : {&PenPoint::x,
                                      &PenPoint::y,
                                      &PenPoint::pressure,
                                      &PenPoint::tiltX,
                                      &PenPoint::tiltY})
                EXPECT_EQ(std::bit_cast<uint32_t>(point.*member),
                          std::bit_cast<uint32_t>(points[i].*member));
        }
    }
}

TEST(ActionLog, WritesItsStrokesAsAScript) {
    const QTemporaryDir folder;
    const std::string path = folder.filePath("actions.json").toStdString();
    ActionLog log({{"mesh", "cube.obj"}, {"seed", 3}, {"steps", nlohmann::json::array()}});
    log.AddStep({{"tool", "Wax"}});
    log.AddStep({{"save", "work.trovik"}});
    StrokeStart start;
    start.isLine = true;
    start.steadyPixels = 12.0f;
    start.modifier = BrushOperation::ModifierSmooth;
    const std::vector<PenPoint> points = Points(true);
    log.AddStroke(start, 17, points);
    EXPECT_EQ(log.StepCount(), 2u);
    EXPECT_EQ(log.SampleBytes(), points.size() * 28);
    log.Write(path);

    std::ifstream file(path);
    const auto script = nlohmann::json::parse(file);
    EXPECT_EQ(script.at("mesh"), "cube.obj");
    EXPECT_EQ(script.at("seed"), 3);
    ASSERT_EQ(script.at("steps").size(), 2u);
    const nlohmann::json& stroke = script.at("steps").at(1).at("stroke");
    EXPECT_EQ(stroke.at("seed"), 17);
    EXPECT_EQ(stroke.at("modifier"), "smooth");
    const nlohmann::json path12 = {{"interactive", true}, {"line", true}, {"stabiliser", 12.0f}};
    EXPECT_EQ(stroke.at("path"), path12);
    ASSERT_EQ(stroke.at("pen").size(), points.size());
    EXPECT_EQ(stroke.at("pen").at(1).size(), 4u);
    EXPECT_EQ(stroke.at("pen").at(3).at(4).get<float>(), points[3].tiltX);
    EXPECT_EQ(stroke.at("pen").at(999).at(3).get<double>(), points[999].milliseconds);
}

TEST(EngineJob, CancelsOnlyTheRequestThatWasMeant) {
    EngineJob job([](uint64_t, const QString&, const char*, uint64_t, uint64_t) {});
    job.Begin(1, "first");
    job.End();
    job.Cancel(1);
    job.Begin(2, "second");
    job.Cancel(1);
    EXPECT_TRUE(job.Report(1, 2, "phase"));
    job.Cancel(2);
    EXPECT_FALSE(job.Report(1, 2, "phase"));
    job.End();
    job.Begin(3, "third");
    EXPECT_TRUE(job.Report(1, 2, "phase"));
    job.CancelAll();
    EXPECT_FALSE(job.Report(1, 2, "phase"));
}

}  // namespace

}  // namespace trovik::studio
