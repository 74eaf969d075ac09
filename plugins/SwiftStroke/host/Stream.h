// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Store.h"

namespace trovik {

class ClassDesc;

/// A scene file that is being read or written. One Serialize function implements both directions:
/// it checks IsStoring and calls the read or write function accordingly. All numbers in the file
/// are little-endian.
///
/// Errors: a host Error is thrown for a read beyond the end or a stored length that exceeds the
/// file. Data that was read before the error must be discarded.
class TROVIK_API Stream {
public:
    virtual ~Stream();

    /// Returns the version of the class in this file or, when storing, the current version of the
    /// class. Returns 0 for a class that the file does not contain.
    virtual int ClassVersion(const ClassDesc* classDesc) const = 0;
    /// Whether the file has format `number` or newer.
    virtual bool IsFormatAtLeast(uint32_t number) const = 0;
    virtual bool IsStoring() const = 0;

    /// Transfers raw elements in memory order.
    virtual void ReadElements(void* elements, uint32_t elementSize, uint64_t count) = 0;
    virtual void WriteElements(const void* elements, uint32_t elementSize, uint64_t count) = 0;

    /// Transfers a whole store, starting with its fill count.
    virtual void ReadStore(Store<uint32_t>& store) = 0;
    virtual void WriteStore(const Store<uint32_t>& store) = 0;

    /// Transfers one plain value in the direction of the stream.
    template <typename T>
    void Transfer(T& value) {
        static_assert(__is_trivially_copyable(T));
        if (IsStoring())
            WriteElements(&value, static_cast<uint32_t>(sizeof(T)), 1);
        else
            ReadElements(&value, static_cast<uint32_t>(sizeof(T)), 1);
    }
    /// Transfers a string as UTF-8, preceded by its byte count.
    void Transfer(QString& text);
};

}  // namespace trovik
