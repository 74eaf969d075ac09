// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Api.h"

#include <QString>

namespace trovik {

/// An error of the host or a plug-in, thrown by pointer: `throw (new Error(...))->Format( text)`.
/// The code that catches it must call Dispose.
class TROVIK_API Error {
public:
    enum Code : int {
        None = 0,
        OutOfMemory = 1,
        /// Incorrect use of an operation; SwiftStroke itself throws only errors with this code.
        InvalidUse = 4,
    };

    Error(const QString& message, Code code, const char* function, const char* file, int line);

    /// Sets the message.
    /// \return this object, so that the call can be part of a throw expression.
    Error* Format(const QString& message);

    const QString& Message() const { return message; }
    Code ErrorCode() const { return code; }
    const char* Function() const { return function; }
    const char* File() const { return file; }
    int Line() const { return line; }

    /// Deletes a caught error, unless it is the static one below.
    static void Dispose(Error* error);

    /// Thrown when memory accounting rejects an allocation (Block::RegisterMemoryBlock).
    static Error* const s_cBadAlloc;

private:
    QString message;
    Code code;
    const char* function;
    const char* file;
    int line;
};

}  // namespace trovik
