// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Store.h"

#include <algorithm>
#include <new>

namespace trovik {

/// Sets the fill count of a store to `count`, discards the old contents, and sets every element to
/// `value`. Store itself reports a failed allocation only by its return value; this function throws
/// instead.
/// \throw std::bad_alloc if the allocation fails, Error::s_cBadAlloc if memory accounting rejects
/// it.
template <typename T>
void FillStore(Store<T>& store, uint32_t count, const T& value) {
    if (!store.SetFill(count, false)) throw std::bad_alloc();
    std::fill_n(store.array, count, value);
}

/// Same as FillStore, but does not set the elements.
template <typename T>
void ResizeStore(Store<T>& store, uint32_t count) {
    if (!store.SetFill(count, false)) throw std::bad_alloc();
}

}  // namespace trovik
