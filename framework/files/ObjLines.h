// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/io/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace trovik {

/// Reads the statements of an OBJ file one by one. Lines end in LF, CR LF or, in files from older
/// systems, CR alone; a backslash at the end of a line continues the statement on the next line.
class ObjLines {
public:
    /// \param job  receives the progress of reading the file as one phase. Borrowed.
    /// \throw HostError with the file; Cancelled.
    explicit ObjLines(const std::string& path, JobControl* job) : file(path, job) {}

    /// \param statement  valid until the next call.
    /// \return false at the end of the file.
    /// \throw HostError for a statement that is too long or has a zero byte; Cancelled.
    bool Next(std::string_view& statement);

    const std::string& Path() const { return file.Path(); }
    /// Returns the number of the last line of the current statement; the first line is 1.
    std::uint64_t Line() const { return line; }

private:
    bool NextLine();

    InputFile file;
    std::uint64_t line = 0;
    /// If lines end in CR alone, the whole file arrives as a single line, which is split here.
    std::string_view pending;
    std::string_view current;
    std::string joined;
};

}  // namespace trovik
