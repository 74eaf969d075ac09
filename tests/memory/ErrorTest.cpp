// SPDX-License-Identifier: Apache-2.0
#include "host/Error.h"

#include <gtest/gtest.h>

namespace trovik {
namespace {

TEST(Error, FormatSetsTheTextAndReturnsTheSameObject) {
    auto* error = new Error(QString(), Error::InvalidUse, "Grid::Face", "Grid.cpp", 12);
    EXPECT_EQ(error->Format(QStringLiteral("wrong parameter")), error);
    EXPECT_EQ(error->Message(), QStringLiteral("wrong parameter"));
    EXPECT_EQ(static_cast<int>(error->ErrorCode()), 4);
    EXPECT_STREQ(error->Function(), "Grid::Face");
    EXPECT_STREQ(error->File(), "Grid.cpp");
    EXPECT_EQ(error->Line(), 12);
    Error::Dispose(error);
}

TEST(Error, IsThrownAndCaughtAsAPointer) {
    Error* caught = nullptr;
    try {
        throw(new Error(QString(), Error::InvalidUse, "f", "g", 1))->Format(QStringLiteral("text"));
    } catch (Error* error) {
        caught = error;
    }
    ASSERT_NE(caught, nullptr);
    EXPECT_EQ(caught->Message(), QStringLiteral("text"));
    Error::Dispose(caught);
}

TEST(Error, MemoryErrorIsStaticAndSurvivesItsDisposal) {
    ASSERT_NE(Error::s_cBadAlloc, nullptr);
    Error::Dispose(Error::s_cBadAlloc);
    EXPECT_EQ(Error::s_cBadAlloc->ErrorCode(), Error::OutOfMemory);
    EXPECT_FALSE(Error::s_cBadAlloc->Message().isEmpty());
}

}  // namespace
}  // namespace trovik
