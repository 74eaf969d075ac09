// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Mesh.h"

#include <vector>

namespace trovik {

/// A renderer that shows nothing and takes down what it is told, while it listens. A host without a
/// screen puts it under a mesh to see which notices a brush gives.
class TROVIK_API NoticeRenderer : public MeshRenderer {
public:
    /// \param updateFactor  0: hears of every vertex; otherwise one notice a patch may do.
    explicit NoticeRenderer(float updateFactor) : factor(updateFactor) {}

    struct Notice {
        uint32_t vertex;
        uint32_t face;
        bool operator==(const Notice&) const = default;
    };

    /// Forgets what it heard and listens from now on. It does not listen at first.
    void StartListening() {
        notices.clear();
        listening = true;
    }
    void StopListening() { listening = false; }
    /// In the order in which they came.
    const std::vector<Notice>& Notices() const { return notices; }

    void rendererVertexChanged(uint32_t vertex, uint32_t face) override;
    float rendererUpdateFactor() const override { return factor; }

private:
    float factor;
    bool listening = false;
    std::vector<Notice> notices;
};

}  // namespace trovik
