// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <QString>

namespace trovik {

/// A failure as the host and its plug-ins throw it: by pointer, `throw (new Error(...))->Format(
/// text)`. Who catches one calls Dispose on it.
class TROVIK_API Error {
public:
    enum Code : int {
        None = 0,
        OutOfMemory = 1,
        /// Wrong use of an operation; the code of all of SwiftStroke's own errors.
        InvalidUse = 4,
    };

    Error(const QString& message, Code code, const char* function, const char* file, int line);

    /// Sets the message. \return this same object, so that the call can stand in the throw.
    Error* Format(const QString& message);

    const QString& Message() const { return message; }
    Code ErrorCode() const { return code; }
    const char* Function() const { return function; }
    const char* File() const { return file; }
    int Line() const { return line; }

    /// Frees a caught error; the static one below is left alone.
    static void Dispose(Error* error);

    /// Thrown when the accounted memory may not grow (Block::RegisterMemoryBlock refused).
    static Error* const s_cBadAlloc;

private:
    QString message;
    Code code;
    const char* function;
    const char* file;
    int line;
};

}  // namespace trovik
