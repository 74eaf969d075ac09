// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace trovik {

/// The statements of an OBJ file, one after the other. Lines end in LF, CR LF or CR alone, as older
/// systems write them; a backslash at the end of a line joins the next one to it.
class ObjLines {
public:
    /// \param job  reading the file is one phase of it. Borrowed.
    /// \throw HostError naming the file; Cancelled.
    explicit ObjLines(const std::string& path, JobControl* job) : file(path, job) {}

    /// \param statement  valid until the next call.
    /// \return false at the end of the file.
    /// \throw HostError for a statement that is too long or has a zero byte; Cancelled.
    bool Next(std::string_view& statement);

    const std::string& Path() const { return file.Path(); }
    /// Number of the last line of the current statement; the first line is 1.
    std::uint64_t Line() const { return line; }

private:
    bool NextLine();

    InputFile file;
    std::uint64_t line = 0;
    /// Lines that end in CR alone reach us as one.
    std::string_view pending;
    std::string_view current;
    std::string joined;
};

}  // namespace trovik
