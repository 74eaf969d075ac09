// SPDX-License-Identifier: Apache-2.0
#include "host/Kernel.h"

namespace trovik {

Kernel* g_pKernel = nullptr;

Interface::~Interface() = default;
Transformation::~Transformation() = default;
Placed::~Placed() = default;
Scene::~Scene() = default;

Kernel::Kernel() : kernelCommandAttribute(this, QStringLiteral("command")) {}
Kernel::~Kernel() = default;

TVCrashReporterFlag::~TVCrashReporterFlag() { g_pKernel->crashFlags -= bit; }

}  // namespace trovik
