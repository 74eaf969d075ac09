// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <pybind11/pybind11.h>

namespace trovik::python {

/// The right of one thread to use the engine. The engine is not re-entrant, and all documents of a
/// process use one kernel, so only one thread may run commands at a time. Destroying the object
/// also destroys the objects that were passed to Retire in the meantime.
class EngineUse {
public:
    /// Waits until no other thread uses the engine. The caller must not hold the GIL, because the
    /// other thread may need it for a callback.
    EngineUse();
    ~EngineUse();
    EngineUse(const EngineUse&) = delete;
    EngineUse& operator=(const EngineUse&) = delete;

    /// Whether the calling thread is using the engine; true in callbacks from it.
    static bool IsOnThisThread();
    /// Destroys the object now or, if the engine is in use, when that use ends. The caller may hold
    /// the GIL; the object must not refer to Python objects.
    static void Retire(std::shared_ptr<void> object);
};

/// Releases the GIL while it runs a function that uses the engine.
template <typename Work>
auto InEngine(const Work& work) {
    const pybind11::gil_scoped_release released;
    const EngineUse use;
    return work();
}

}  // namespace trovik::python
