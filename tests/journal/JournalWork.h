// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/DiskCalls.h"
#include "framework/script/ScriptRunner.h"
#include "tests/files/TemporaryFolder.h"

#include <nlohmann/json.hpp>

#include <string>
#include <unistd.h>

namespace trovik::test {

/// A disk whose calls take a fixed time, so that the test takes no longer on a slow disk.
class QuickDisk : public DiskCalls {
public:
    explicit QuickDisk(useconds_t microseconds = 0) : wait(microseconds) { Use(this); }
    ~QuickDisk() override { Use(nullptr); }
    QuickDisk(const QuickDisk&) = delete;
    QuickDisk& operator=(const QuickDisk&) = delete;
    int Sync(int) override { return wait == 0 ? 0 : usleep(wait); }

private:
    useconds_t wait;
};

/// Writes a cube with six faces. \return its path.
std::string FillCube(const TemporaryFolder& folder);

/// Writes a script with these steps for the cube with three subdivisions. \return its path.
std::string FillScript(const TemporaryFolder& folder,
                       const nlohmann::json& steps,
                       const nlohmann::json& mirror = {"x"});

/// Returns a checksum of the positions and masks of all levels, the offsets of all layers and the
/// index of the bound level. Strokes may be open.
uint32_t StateOf(Document& document);

}  // namespace trovik::test
