// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Store.h"

namespace trovik {

class ClassDesc;

/// A scene file being read or written. One Serialize serves both directions: it asks IsStoring and
/// takes the fitting one of each pair of transfers. All numbers are little-endian in the file.
///
/// Errors: a read beyond the end, or a stored length that the file cannot hold, throws an Error of
/// the host; what was read so far is to be thrown away.
class TROVIK_API Stream {
public:
    virtual ~Stream();

    /// Version under which the class stands in this file; when storing, its present version. A
    /// class that the file does not name answers 0.
    virtual int ClassVersion(const ClassDesc* classDesc) const = 0;
    /// Whether the file is of format `number` or newer.
    virtual bool IsFormatAtLeast(uint32_t number) const = 0;
    virtual bool IsStoring() const = 0;

    /// Raw elements, element by element in memory order.
    virtual void ReadElements(void* elements, uint32_t elementSize, uint64_t count) = 0;
    virtual void WriteElements(const void* elements, uint32_t elementSize, uint64_t count) = 0;

    /// A whole store, fill count first.
    virtual void ReadStore(Store<uint32_t>& store) = 0;
    virtual void WriteStore(const Store<uint32_t>& store) = 0;

    /// One plain value in the direction of the stream.
    template <typename T>
    void Transfer(T& value) {
        static_assert(__is_trivially_copyable(T));
        if (IsStoring())
            WriteElements(&value, static_cast<uint32_t>(sizeof(T)), 1);
        else
            ReadElements(&value, static_cast<uint32_t>(sizeof(T)), 1);
    }
    /// A text as UTF-8 with its byte count ahead.
    void Transfer(QString& text);
};

}  // namespace trovik
