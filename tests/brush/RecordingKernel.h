// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framework/nodes/HostKernel.h"

#include <vector>

namespace trovik::test {

/// Replaces the host's kernel during its lifetime and records a brush's calls.
class RecordingKernel : public Kernel, private Interface {
public:
    RecordingKernel() : before(&HostKernel::Instance()) { g_pKernel = this; }
    ~RecordingKernel() override { g_pKernel = before; }

    trovik::Interface* Interface() override { return this; }
    trovik::Scene* Scene() override { return HostKernel::Instance().Scene(); }
    bool IsTestModeOn() const override { return testMode; }

    struct Message {
        QString text;
        HUDMessageType type;
    };
    struct LayerPanelSwitch {
        LayerUIType type;
        /// The crash flags during the call.
        uint32_t flags;
    };
    std::vector<Message> messages;
    std::vector<LayerPanelSwitch> layerPanelSwitches;
    bool testMode = false;

private:
    void HUDMessageShow(const QString& text, HUDMessageType type) override {
        messages.push_back({text, type});
    }
    void ActivateLayerSystem(LayerUIType type) override {
        layerPanelSwitches.push_back({type, crashFlags});
    }

    Kernel* before;
};

}  // namespace trovik::test
