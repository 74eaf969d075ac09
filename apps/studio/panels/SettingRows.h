// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "panels/SettingCatalogue.h"

#include <map>
#include <string>

namespace trovik::studio {

/// The presentation of settings by their name, such as "stamp.factor".
using SettingRows = std::map<std::string, SettingAppearance>;

/// The settings that have a translated label and a description.
SettingRows MakeSettingRows();

}  // namespace trovik::studio
