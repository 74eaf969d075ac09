// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/nodes/SceneStream.h"
#include "host/Node.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/memory/MemoryLimit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <functional>

namespace trovik {
namespace {

const ClassDesc& Versioned() {
    static const ClassDesc desc(Node::StaticClass(),
                                Node::StaticClass(),
                                QStringLiteral("Versioned"),
                                QString(),
                                nullptr,
                                0,
                                5);
    return desc;
}

/// The text of the error that the action throws; empty if it throws none.
std::string ErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (Error* error) {
        EXPECT_EQ(error->ErrorCode(), Error::InvalidUse);
        std::string text = error->Message().toStdString();
        Error::Dispose(error);
        return text;
    }
    return "";
}

/// A scene with one element of each kind.
std::vector<uint8_t> SampleScene() {
    SceneStream stream;
    float number = 0.1f;
    stream.Transfer(number);
    QString text = QStringLiteral("Größe");
    stream.Transfer(text);
    Store<uint32_t> store;
    for (uint32_t i = 0; i < 5; ++i) store.Append(i * 1000);
    stream.WriteStore(store);
    const uint16_t raw[3] = {1, 2, 0x1234};
    stream.WriteElements(raw, 2, 3);
    return stream.ToBytes();
}

void ReadSample(SceneStream& stream) {
    float number = 0.0f;
    stream.Transfer(number);
    EXPECT_EQ(number, 0.1f);
    QString text;
    stream.Transfer(text);
    EXPECT_EQ(text, QStringLiteral("Größe"));
    Store<uint32_t> store;
    stream.ReadStore(store);
    ASSERT_EQ(store.fill, 5u);
    EXPECT_EQ(store.array[4], 4000u);
    uint16_t raw[3] = {};
    stream.ReadElements(raw, 2, 3);
    EXPECT_THAT(raw, testing::ElementsAre(1, 2, 0x1234));
}

TEST(SceneStream, ReadsBackTheWrittenValues) {
    SceneStream stream(SampleScene());
    EXPECT_FALSE(stream.IsStoring());
    ReadSample(stream);
    EXPECT_EQ(stream.Remaining(), 0u);
}

TEST(SceneStream, BytesAreLittleEndianInTheDocumentedLayout) {
    SceneStream stream;
    const std::size_t header = stream.ToBytes().size();
    uint32_t value = 0x01020304;
    stream.Transfer(value);
    QString text = QStringLiteral("é");
    stream.Transfer(text);
    const std::vector<uint8_t> bytes = stream.ToBytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.begin() + 8), "TROVIKSC");
    EXPECT_EQ(bytes[8], SceneStream::currentFormat & 0xff);
    EXPECT_EQ(bytes[9], SceneStream::currentFormat >> 8);
    EXPECT_THAT(
        std::vector<uint8_t>(bytes.begin() + static_cast<std::ptrdiff_t>(header), bytes.end()),
        testing::ElementsAre(4, 3, 2, 1, 2, 0, 0, 0, 0xc3, 0xa9));
}

TEST(SceneStream, EmptyStoreReplacesThePreviousContent) {
    SceneStream written;
    written.WriteStore(Store<uint32_t>());
    SceneStream read(written.ToBytes());
    Store<uint32_t> store;
    store.Append(3);
    read.ReadStore(store);
    EXPECT_EQ(store.fill, 0u);
}

TEST(SceneStream, ClassVersionsComeFromTheFile) {
    Versioned();
    SceneStream present;
    EXPECT_EQ(present.ClassVersion(&Versioned()), 5);
    SceneStream old;
    old.SetClassVersion(&Versioned(), 2);
    EXPECT_EQ(old.ClassVersion(&Versioned()), 2);
    EXPECT_EQ(SceneStream(present.ToBytes()).ClassVersion(&Versioned()), 5);
    EXPECT_EQ(SceneStream(old.ToBytes()).ClassVersion(&Versioned()), 2);
}

TEST(SceneStream, ClassMissingInTheFileHasVersionZero) {
    const std::vector<uint8_t> bytes = SceneStream().ToBytes();
    const ClassDesc later(Node::StaticClass(),
                          Node::StaticClass(),
                          QStringLiteral("Later"),
                          QString(),
                          nullptr,
                          0,
                          4);
    EXPECT_EQ(SceneStream(bytes).ClassVersion(&later), 0);
    EXPECT_EQ(SceneStream().ClassVersion(&later), 4);
}

TEST(SceneStream, FormatComesFromTheFile) {
    const SceneStream present;
    EXPECT_TRUE(present.IsStoring());
    EXPECT_TRUE(present.IsFormatAtLeast(328));
    EXPECT_TRUE(present.IsFormatAtLeast(SceneStream::currentFormat));
    EXPECT_FALSE(present.IsFormatAtLeast(SceneStream::currentFormat + 1));
    const SceneStream old(SceneStream(327).ToBytes());
    EXPECT_TRUE(old.IsFormatAtLeast(327));
    EXPECT_FALSE(old.IsFormatAtLeast(328));
}

TEST(SceneStream, EveryTruncationIsAnError) {
    const std::vector<uint8_t> whole = SampleScene();
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string error = ErrorOf([&] {
            SceneStream stream(std::vector<uint8_t>(
                whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
            float number = 0.0f;
            stream.Transfer(number);
            QString text;
            stream.Transfer(text);
            Store<uint32_t> store;
            stream.ReadStore(store);
            uint16_t raw[3] = {};
            stream.ReadElements(raw, 2, 3);
        });
        EXPECT_NE(error, "") << "cut at " << size;
    }
}

TEST(SceneStream, OtherFilesAreRefused) {
    std::vector<uint8_t> bytes = SampleScene();
    bytes[3] = 'X';
    EXPECT_THAT(ErrorOf([&] { SceneStream stream(bytes); }), testing::HasSubstr("TROVIKSC"));
    EXPECT_THAT(ErrorOf([] { SceneStream stream(std::vector<uint8_t>(3)); }),
                testing::HasSubstr("shorter"));
}

TEST(SceneStream, StoreLengthBeyondTheFileAllocatesNothing) {
    for (const uint32_t count : {3u, 0x40000000u, 0xffffffffu}) {
        SceneStream written;
        uint32_t length = count;
        written.Transfer(length);
        uint64_t eightBytes = 0;
        written.Transfer(eightBytes);
        SceneStream read(written.ToBytes());
        Store<uint32_t> store;
        const test::MemoryLimit nothing(0);
        EXPECT_EQ(
            ErrorOf([&] { read.ReadStore(store); }),
            "an array of " + std::to_string(count) + " entries does not fit into the 8 bytes left");
    }
}

TEST(SceneStream, TextLengthBeyondTheFileIsAnError) {
    SceneStream written;
    uint32_t length = 0xfffffff0u;
    written.Transfer(length);
    SceneStream read(written.ToBytes());
    QString text = QStringLiteral("kept");
    EXPECT_THAT(ErrorOf([&] { static_cast<Stream&>(read).Transfer(text); }),
                testing::HasSubstr("the scene ends at byte"));
    EXPECT_EQ(text, QStringLiteral("kept"));
}

TEST(SceneStream, OverflowingElementCountIsAnError) {
    SceneStream written;
    uint64_t value = 0;
    written.Transfer(value);
    SceneStream read(written.ToBytes());
    EXPECT_NE(ErrorOf([&] { read.ReadElements(&value, 8, 0x2000000000000001u); }), "");
    EXPECT_EQ(read.Remaining(), 8u);
}

TEST(SceneStream, RefusedStoreThrowsTheMemoryError) {
    SceneStream written;
    Store<uint32_t> store;
    store.SetFill(100, false);
    std::fill_n(store.array, 100, 7u);
    written.WriteStore(store);
    SceneStream read(written.ToBytes());
    Store<uint32_t> other;
    const test::MemoryLimit little(399);
    try {
        read.ReadStore(other);
        FAIL() << "the memory was not refused";
    } catch (Error* error) {
        EXPECT_EQ(error, Error::s_cBadAlloc);
    }
}

TEST(SceneStream, FileHasTheSameBytes) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("s.scene");
    SceneStream written;
    float number = 2.5f;
    written.Transfer(number);
    written.ToFile(path);
    EXPECT_EQ(folder.FileCount(), 1u) << "no other file is left";
    const std::vector<uint8_t> bytes = written.ToBytes();
    EXPECT_EQ(TemporaryFolder::Content(path), std::string(bytes.begin(), bytes.end()));
    SceneStream read = SceneStream::FromFile(path);
    number = 0.0f;
    read.Transfer(number);
    EXPECT_EQ(number, 2.5f);
}

TEST(SceneStream, FileErrorsNameTheFile) {
    const TemporaryFolder folder;
    const auto reasonOf = [](const std::function<void()>& action) -> std::string {
        try {
            action();
        } catch (const HostError& error) {
            return error.what();
        }
        return "";
    };
    const std::string missing = folder.Path("missing.scene");
    EXPECT_THAT(reasonOf([&] { SceneStream::FromFile(missing); }), testing::HasSubstr(missing));
    const std::string other = folder.Fill("other.scene", "not a scene at all");
    EXPECT_EQ(reasonOf([&] { SceneStream::FromFile(other); }),
              other + ": not a scene: the first eight bytes are not TROVIKSC");
    EXPECT_NE(reasonOf([&] { SceneStream::FromFile(folder.Fill("empty.scene", "")); }), "");
    const std::string nowhere = folder.Path("no/such/folder.scene");
    EXPECT_THAT(reasonOf([&] { SceneStream().ToFile(nowhere); }), testing::HasSubstr(nowhere));
}

}  // namespace
}  // namespace trovik
