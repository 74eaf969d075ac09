// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "commands/FormDialog.h"

namespace trovik::studio {

class Keymap;
class Preferences;

/// Edits the preferences. Changes apply at once; Cancel reverts them.
class PreferencesDialog : public FormDialog {
    Q_OBJECT
public:
    PreferencesDialog(Preferences& preferences, Keymap& keymap, QWidget* parent = nullptr);
};

}  // namespace trovik::studio
