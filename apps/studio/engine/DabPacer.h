// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/document/Document.h"

#include <condition_variable>
#include <functional>
#include <mutex>

namespace trovik::studio {

/// Stops the engine thread after each dab of a step until the UI thread has shown it.
///
/// Wait: engine thread. All other functions: any thread.
class DabPacer {
public:
    /// Ends the current call of Wait, or the next one.
    void Go();
    /// Ends the current call of Wait and all further ones until Begin is called.
    void Release();
    /// Makes Wait block again. Call it when the step is requested, so that Release can follow at
    /// any time.
    void Begin();
    void Wait();

private:
    std::mutex mutex;
    std::condition_variable wake;
    bool mayGo = false;
    bool isReleased = false;
};

/// Calls a function whenever the surface of a document changes, until the listener is destroyed.
/// Borrows the document.
class SurfaceListener final : public DocumentObserver {
public:
    SurfaceListener(trovik::Document& observed, std::function<void()> onChange)
        : document(observed), listener(std::move(onChange)) {
        document.AddObserver(*this);
    }
    ~SurfaceListener() { document.RemoveObserver(*this); }
    SurfaceListener(const SurfaceListener&) = delete;
    SurfaceListener& operator=(const SurfaceListener&) = delete;
    void SurfaceChanged(const SurfaceChange&) override { listener(); }

private:
    trovik::Document& document;
    std::function<void()> listener;
};

}  // namespace trovik::studio
