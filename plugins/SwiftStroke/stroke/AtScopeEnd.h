// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

namespace trovik {

/// Runs an action at the end of a scope, even if the scope is left by an exception. The action must
/// not throw.
template <class Action>
class AtScopeEnd {
public:
    explicit AtScopeEnd(Action scopeAction) : action(std::move(scopeAction)) {}
    // NOLINTNEXTLINE(bugprone-exception-escape): actions call functions that do not throw.
    ~AtScopeEnd() { action(); }
    AtScopeEnd(const AtScopeEnd&) = delete;
    AtScopeEnd& operator=(const AtScopeEnd&) = delete;

private:
    Action action;
};

}  // namespace trovik
