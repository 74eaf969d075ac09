// SPDX-License-Identifier: Apache-2.0
#include "tests/brush/ToolRows.h"

#include <QCoreApplication>
#include <QTranslator>
#include <gtest/gtest.h>

namespace trovik::test {
namespace {

// These are evaluated before any host code runs.
const bool smoothRowIsNullAtLoad = smoothConfiguration == nullptr;
const uint32_t rowsAtLoad = BrushOperation::ConfigurationCount();

struct Row {
    const char* name;
    const char* help;
};
constexpr Row expectedRows[] = {
    {"Sculpt",
     "The Sculpt Tool lifts the surface as you stroke over it.\n<p>To depress the surface rather "
     "than lifting it, hold down the <b>${SHORTCUT:Draw inverse-NoMouse}</b> key as you stroke."},
    {"Smear", "The Smear Tool pulls the surface under the brush in the direction of the stroke."},
    {"Pinch",
     "The Pinch Tool pulls the mesh vertices towards the the center of the brush as you stroke. "
     "Use it along soft edges to sharpen them."},
    {"Smooth",
     "The Smooth Tool smooths out surface detail by averaging the mesh points under your brush "
     "stroke."},
    {"Amplify",
     "The Amplify Tool accentuates surface detail by raising high areas and lowering low areas as "
     "you stroke.\n<p>To reduce surface detail, hold down the <b>${SHORTCUT:Draw "
     "inverse-NoMouse}</b> key as you stroke."},
    {"Flatten",
     "The Flatten Tool flattens the surface by moving the vertices under your brush stroke "
     "towards a common plane."},
    {"Scrape",
     "The Scrape Tool reduces the high areas of the surface, while leaving the lower areas "
     "untouched."},
    {"Fill",
     "The Fill Tool fills in the valleys on the surface, while leaving the high areas untouched."},
    {"Wax",
     "The Wax Tool builds up the surface, similar to the way adding clay or wax to a sculpture "
     "would."},
    {"Bulge",
     "The Bulge Tool inflates the area under the brush, by pushing each vertex out along its own "
     "normal."},
    {"Spray",
     "The Spray Tool should be used with a stamp. It sprays the stamp imprint randomly along your "
     "stroke."},
    {"Repeat",
     "The Repeat tool should be used with a stamp. Use it to stroke patterns onto your model. For "
     "example: rivets on the wing of an airplane, zippers, stitching, etc.  The stamp will follow "
     "the direction of the stroke."},
    {"Knife",
     "The Knife Tool cuts very fine strokes into a model's surface. This tool has its own stamp "
     "image that should not be changed."},
    {"Foamy",
     "The Foamy Tool is intended for initial shape forming, rather than for creating fine detail. "
     "It is similar to the Sculpt Tool, but has a softer feel."},
    {"Imprint",
     "Use the Imprint Tool with a stamp image.\n<p>Press, drag, and release to imprint one copy "
     "of the stamp at a specific location, size, and orientation."},
};

/// Prefixes every string of the brush with a marker, and counts the translator comments.
class MarkingTranslator : public QTranslator {
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context,
                      const char* text,
                      const char* comment,
                      int) const override {
        if (QString::fromLatin1(context) != QLatin1String("SwiftStroke")) return {};
        // Qt passes a missing comment as null or as an empty string.
        if (comment != nullptr && *comment != '\0') ++comments;
        return QLatin1String("~") + QString::fromLatin1(text);
    }
    mutable int comments = 0;
};

TEST(ToolCatalogue, NothingIsRegisteredBeforeTheInitialiserRuns) {
    EXPECT_TRUE(smoothRowIsNullAtLoad);
    EXPECT_EQ(rowsAtLoad, 0u);
}

TEST(ToolCatalogue, HasFifteenRowsWithIdsNamesAndToolTips) {
    NeedTools();
    ASSERT_GE(BrushOperation::ConfigurationCount(), 15u);
    for (uint32_t i = 0; i < 15; ++i) {
        const BrushConfiguration* row = BrushOperation::Configuration(i);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(row->ID(), i);
        EXPECT_EQ(row->BrushClass(), SwiftStroke::StaticClass());
        EXPECT_EQ(row->Name().toStdString(), expectedRows[i].name);
        EXPECT_EQ(row->DisplayName().toStdString(), expectedRows[i].name);
        EXPECT_EQ(row->Category(), PredefinedCategory::Sculpt);
        EXPECT_EQ(static_cast<int>(row->Category()), 1);
        EXPECT_EQ(row->Flags(), 0);
        EXPECT_EQ(row->ToolTip().toStdString(),
                  std::string("<div style=\"background-color:Black; color:White;\">") +
                      expectedRows[i].name + "</div><p>" + expectedRows[i].help);
    }
}

TEST(ToolCatalogue, StoredRowIsThatOfSmooth) {
    NeedTools();
    ASSERT_NE(smoothConfiguration, nullptr);
    EXPECT_EQ(smoothConfiguration->ID(), 3u);
    EXPECT_EQ(smoothConfiguration, BrushOperation::Configuration(3));
}

TEST(ToolCatalogue, TextsForTheUserAreTranslatedAndTheNameIsNot) {
    NeedTools();
    int argumentCount = 1;
    char program[] = "brush-tests";
    char* arguments[] = {program, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    MarkingTranslator translator;
    QCoreApplication::installTranslator(&translator);
    BrushConfiguration* const keptRow = smoothConfiguration;
    const uint32_t first = BrushOperation::ConfigurationCount();
    RegisterTools();
    QCoreApplication::removeTranslator(&translator);
    smoothConfiguration = keptRow;

    ASSERT_EQ(BrushOperation::ConfigurationCount(), first + 15);
    for (uint32_t i = 0; i < 15; ++i) {
        const BrushConfiguration* row = BrushOperation::Configuration(first + i);
        EXPECT_EQ(row->Name().toStdString(), expectedRows[i].name);
        EXPECT_EQ(row->DisplayName().toStdString(), std::string("~") + expectedRows[i].name);
        EXPECT_EQ(row->ToolTip().toStdString(),
                  std::string("<div style=\"background-color:Black; color:White;\">~") +
                      expectedRows[i].name + "</div><p>~" + expectedRows[i].help);
    }
    EXPECT_EQ(translator.comments, 0);
}

}  // namespace
}  // namespace trovik::test
