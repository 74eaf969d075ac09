// SPDX-License-Identifier: Apache-2.0
#include "framework/nodes/HostKernel.h"

#include "host/BrushOperation.h"

namespace trovik {

namespace {

thread_local std::vector<std::string> messages;
thread_local std::function<void(const std::string&)> listener;

}  // namespace

HostKernel::HostKernel() {
    g_pKernel = this;
    SetName(QStringLiteral("Kernel"));
    // Descriptors are registered on first use, but the registry must contain the host's descriptors
    // from the start.
    Node::StaticClass();
    TreeNode::StaticClass();
    Mesh::StaticClass();
    SubdivisionLevel::StaticClass();
    Geometry::StaticClass();
    MeshRenderer::StaticClass();
    BrushOperation::StaticClass();
}

HostKernel& HostKernel::Instance() {
    // Never destroyed: brushes with static lifetime may use scope guards until the program exits.
    static auto* kernel = new HostKernel;
    return *kernel;
}

const std::vector<std::string>& HostKernel::HUDMessages() const { return messages; }

void HostKernel::ClearHUDMessages() { messages.clear(); }

std::function<void(const std::string&)> HostKernel::SetHUDListener(
    std::function<void(const std::string&)> newListener) {
    return std::exchange(listener, std::move(newListener));
}

void HostKernel::HUDMessageShow(const QString& text, HUDMessageType) {
    messages.push_back(text.toStdString());
    if (listener) listener(messages.back());
}

// Does nothing, because a host without panels has no layer panel.
void HostKernel::ActivateLayerSystem(LayerUIType) {}

}  // namespace trovik
