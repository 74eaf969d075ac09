// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "host/Attribute.h"

#include <string>
#include <vector>

namespace trovik::test {

/// Records its attributes' events as "name:type".
class RecordingNode : public Node {
public:
    void OnNodeEvent(const Attribute& attribute, NodeEventType type) override {
        events.push_back(attribute.Name().toStdString() + ":" + std::to_string(type));
    }
    std::vector<std::string> TakeEvents() { return std::exchange(events, {}); }

private:
    std::vector<std::string> events;
};

}  // namespace trovik::test
