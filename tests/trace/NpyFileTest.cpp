// SPDX-License-Identifier: Apache-2.0
#include "framework/errors/HostError.h"
#include "framework/trace/NpyFile.h"
#include "tests/files/TemporaryFolder.h"
#include "tests/trace/NpyArray.h"

#include <gtest/gtest.h>

namespace trovik::test {
namespace {

TEST(NpyFile, HeaderIsThatOfVersionOneAndEndsOnAMultipleOfSixtyFour) {
    for (const std::vector<uint64_t>& shape : std::vector<std::vector<uint64_t>>{
             {7}, {3, 4}, {2, 3, 4}, {0, 3}, {4000000000u, 4}, {123456789, 12345, 3}}) {
        for (const char* type : {npyUint8, npyFloat32, npyRecord}) {
            const std::string header = NpyHeader(type, shape);
            SCOPED_TRACE(header);
            EXPECT_EQ(header.substr(0, 8), std::string("\x93NUMPY\x01\x00", 8));
            EXPECT_EQ(header.size() % 64, 0u);
            EXPECT_EQ(static_cast<uint8_t>(header[8]) + 256u * static_cast<uint8_t>(header[9]),
                      header.size() - 10);
            EXPECT_EQ(header.back(), '\n');
        }
    }
}

TEST(NpyFile, HeaderHasTypeOrderAndShape) {
    const auto dictionary = [](const char* type, const std::vector<uint64_t>& shape) {
        const std::string header = NpyHeader(type, shape);
        return header.substr(10, header.find('}') - 9);
    };
    EXPECT_EQ(dictionary(npyFloat32, {5, 3}),
              "{'descr': '<f4', 'fortran_order': False, 'shape': (5, 3), }");
    EXPECT_EQ(dictionary(npyUint8, {5}),
              "{'descr': '|u1', 'fortran_order': False, 'shape': (5,), }");
    EXPECT_EQ(dictionary(npyInt32, {5, 4, 3}),
              "{'descr': '<i4', 'fortran_order': False, 'shape': (5, 4, 3), }");
    EXPECT_EQ(
        dictionary(npyRecord, {0}),
        "{'descr': [('originalPosition', '<f4', (3,)), ('visitStampWord', '<u4'), "
        "('originalNormal', '<i2', (4,)), ('buildUp', '<f4'), ('vertexIndex', '<u4'), "
        "('reserved', '<u4'), ('layerSlot', '<u4')], 'fortran_order': False, 'shape': (0,), }");
}

TEST(NpyFile, ValuesFollowTheHeaderInMemoryLayout) {
    const TemporaryFolder folder;
    const float values[6] = {0.0f, -1.5f, 2.0f, 3.0f, 1e30f, -0.0f};
    WriteNpyFile(folder.Path("a.npy"), npyFloat32, {2, 3}, values, sizeof values);
    const NpyArray array(folder.Path("a.npy"));
    EXPECT_EQ(array.Type(), "'<f4'");
    EXPECT_EQ(array.Shape(), "(2, 3)");
    EXPECT_EQ(array.bytes.size(), array.headerBytes + sizeof values);
    EXPECT_EQ(array.bytes.substr(array.headerBytes),
              std::string(reinterpret_cast<const char*>(values), sizeof values));
}

TEST(NpyFile, EmptyArrayNeedsNoData) {
    const TemporaryFolder folder;
    WriteNpyFile(folder.Path("a.npy"), npyRecord, {0}, nullptr, 0);
    EXPECT_EQ(NpyArray(folder.Path("a.npy")).Shape(), "(0,)");
}

TEST(NpyFile, MissingFolderIsNamed) {
    const TemporaryFolder folder;
    const std::string path = folder.Path("nowhere") + "/a.npy";
    try {
        WriteNpyFile(path, npyUint8, {0}, nullptr, 0);
        FAIL() << "no error";
    } catch (const HostError& error) {
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
        EXPECT_NE(std::string(error.what()).find("No such file"), std::string::npos);
    }
}

TEST(NpyFile, FullDiskIsAnError) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "this system has no /dev/full";
    const std::vector<uint8_t> values(100000);
    EXPECT_THROW(WriteNpyFile("/dev/full", npyUint8, {values.size()}, values.data(), values.size()),
                 HostError);
}

}  // namespace
}  // namespace trovik::test
