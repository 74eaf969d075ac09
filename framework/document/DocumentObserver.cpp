// SPDX-License-Identifier: Apache-2.0
#include "framework/document/DocumentObserver.h"

namespace trovik {

void DocumentObserver::SurfaceChanged(const SurfaceChange&) {}
void DocumentObserver::LevelsChanged() {}
void DocumentObserver::LayersChanged() {}
void DocumentObserver::HistoryChanged() {}
void DocumentObserver::ToolChanged() {}
void DocumentObserver::CameraChanged() {}
void DocumentObserver::ModifiedChanged(bool) {}
void DocumentObserver::Problem(const std::string&) {}

}  // namespace trovik
