// SPDX-License-Identifier: Apache-2.0
#include "framework/mesh/NotificationRecorder.h"

namespace trovik {

void NotificationRecorder::rendererVertexChanged(uint32_t vertex, uint32_t face) {
    if (listening) notices.push_back({vertex, face});
}

}  // namespace trovik
