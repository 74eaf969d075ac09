// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/HostScene.h"
#include "host/Kernel.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace trovik {

/// The kernel of a host without a window system: messages are stored and forwarded as text.
class TROVIK_API HostKernel : public Kernel, private Interface {
public:
    /// The only instance, created on first use; from then on, g_pKernel points to it.
    static HostKernel& Instance();

    trovik::Interface* Interface() override { return this; }
    HostScene* Scene() override { return &scene; }
    bool IsTestModeOn() const override { return testMode; }

    void SetTestMode(bool on) { testMode = on; }
    // Each thread has its own list and listener, because documents of several threads show messages
    // at the same time.

    /// Messages that the calling thread has shown since it last cleared the list.
    const std::vector<std::string>& HUDMessages() const;
    void ClearHUDMessages();
    /// Sets the function that is called with each message of the calling thread; may be null.
    /// \return the previous listener.
    std::function<void(const std::string&)> SetHUDListener(
        std::function<void(const std::string&)> newListener);

private:
    HostKernel();
    void HUDMessageShow(const QString& text, HUDMessageType type) override;
    void ActivateLayerSystem(LayerUIType type) override;

    HostScene scene;
    bool testMode = false;
};

/// Redirects the messages of the calling thread to a listener during the lifetime of this object,
/// then restores the previous listener. Scopes can be nested. Construct and destroy it on the same
/// thread.
class HUDListening {
public:
    explicit HUDListening(std::function<void(const std::string&)> listener)
        : before(HostKernel::Instance().SetHUDListener(std::move(listener))) {}
    ~HUDListening() { HostKernel::Instance().SetHUDListener(std::move(before)); }
    HUDListening(const HUDListening&) = delete;
    HUDListening& operator=(const HUDListening&) = delete;

private:
    std::function<void(const std::string&)> before;
};

}  // namespace trovik
