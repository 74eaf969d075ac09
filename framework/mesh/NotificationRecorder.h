// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <vector>

namespace trovik {

/// A renderer that draws nothing and, once started, records the notifications that it receives. A
/// host without a display attaches it to a mesh to check which notifications a brush sends.
class TROVIK_API NotificationRecorder : public MeshRenderer {
public:
    /// \param updateFactor  0 if brushes must send a notification for every vertex; otherwise a
    /// brush may send one per patch.
    explicit NotificationRecorder(float updateFactor) : factor(updateFactor) {}

    struct Notice {
        uint32_t vertex;
        uint32_t face;
        bool operator==(const Notice&) const = default;
    };

    /// Clears the recorded notifications and starts recording. A new object does not record until
    /// this function is called.
    void StartRecording() {
        notices.clear();
        listening = true;
    }
    void StopRecording() { listening = false; }
    /// The recorded notifications, in order of arrival.
    const std::vector<Notice>& Notices() const { return notices; }

    void rendererVertexChanged(uint32_t vertex, uint32_t face) override;
    float rendererUpdateFactor() const override { return factor; }

private:
    float factor;
    bool listening = false;
    std::vector<Notice> notices;
};

}  // namespace trovik
