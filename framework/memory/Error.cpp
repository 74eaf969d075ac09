// SPDX-License-Identifier: Apache-2.0
#include "host/Error.h"

namespace trovik {

namespace {

Error* OutOfMemoryError() {
    static auto* error =
        new Error(QString::fromLatin1("Out of memory: the memory limit does not allow more"),
                  Error::OutOfMemory,
                  "Block::RegisterMemoryBlock",
                  __FILE__,
                  __LINE__);
    return error;
}

}  // namespace

Error* const Error::s_cBadAlloc = OutOfMemoryError();

Error::Error(
    const QString& text, Code errorCode, const char* inFunction, const char* inFile, int atLine)
    : message(text), code(errorCode), function(inFunction), file(inFile), line(atLine) {}

Error* Error::Format(const QString& text) {
    message = text;
    return this;
}

void Error::Dispose(Error* error) {
    if (error != s_cBadAlloc) delete error;
}

}  // namespace trovik
