// SPDX-License-Identifier: Apache-2.0
#include "window/PreferencesDialog.h"

#include "commands/Keymap.h"
#include "commands/Preferences.h"

#include <QCheckBox>
#include <QComboBox>
#include <QSpinBox>

namespace trovik::studio {

namespace {

void Choose(QComboBox* box, const QVariant& value) { box->setCurrentIndex(box->findData(value)); }

}  // namespace

PreferencesDialog::PreferencesDialog(Preferences& preferences, Keymap& keymap, QWidget* parent)
    : FormDialog(tr("Preferences"), tr("OK"), parent) {
    QComboBox* theme = AddChoice(
        tr("Theme"), tr("Colours of the window"), {{tr("Dark"), "dark"}, {tr("Light"), "light"}});
    Choose(theme, preferences.Theme());
    Choices scales;
    for (const int percent : {75, 90, 100, 110, 125, 150, 175, 200})
        scales.push_back({QStringLiteral("%1%").arg(percent), percent / 100.0});
    QComboBox* scale = AddChoice(tr("Interface size"), tr("Size of text and controls"), scales);
    Choose(scale, preferences.UiScale());
    Choices presets;
    for (const QString& preset : Keymap::Presets())
        presets.push_back({Keymap::PresetTitle(preset), preset});
    QComboBox* navigation =
        AddChoice(tr("Navigation"),
                  tr("Default: the middle button orbits, pans with Shift, and zooms with Ctrl. "
                     "Alt-drag: the left button with Alt orbits. Pen: a drag next to the surface "
                     "orbits. The preset's keys also apply."),
                  presets);
    Choose(navigation, preferences.Navigation());
    QSpinBox* undo = AddWhole(
        tr("Undo memory (MiB)"), tr("Memory for undo steps"), 64, 65536, preferences.UndoBudget());
    undo->setSingleStep(256);
    QCheckBox* undoFile = AddCheck(tr("Older undo steps on disk"),
                                   tr("Stores undo steps beyond this limit in a temporary file"),
                                   preferences.UsesUndoFile());
    QComboBox* position =
        AddChoice(tr("Pen position"),
                  tr("Takes the position from the tablet, which is more precise, or from the "
                     "cursor, for tablets on which pen and cursor positions differ"),
                  {{tr("Tablet"), "device"}, {tr("Cursor"), "pointer"}});
    Choose(position, preferences.PenPosition());
    QComboBox* eraser = AddChoice(tr("Eraser end"),
                                  tr("The effect of strokes with the pen's eraser end"),
                                  {{tr("Inverts the tool"), "invert"}, {tr("Smooths"), "smooth"}});
    Choose(eraser, preferences.Eraser());
    QComboBox* barrel = AddChoice(tr("Barrel button"),
                                  tr("The effect of dragging with the pen's barrel button"),
                                  {{tr("Pans"), "pan"}, {tr("Orbits"), "orbit"}});
    Choose(barrel, preferences.BarrelButton());

    // Theme and size changes take effect while the dialog is open.
    const QString themeBefore = preferences.Theme();
    const double scaleBefore = preferences.UiScale();
    connect(theme, &QComboBox::activated, this, [&preferences, theme] {
        preferences.SetTheme(theme->currentData().toString());
    });
    connect(scale, &QComboBox::activated, this, [&preferences, scale] {
        preferences.SetUiScale(scale->currentData().toDouble());
    });
    connect(this, &QDialog::rejected, this, [&preferences, themeBefore, scaleBefore] {
        preferences.SetTheme(themeBefore);
        preferences.SetUiScale(scaleBefore);
    });
    connect(this, &QDialog::accepted, this, [=, &preferences, &keymap] {
        const QString preset = navigation->currentData().toString();
        if (preset != preferences.Navigation()) keymap.SetPreset(preset);
        preferences.SetNavigation(preset);
        preferences.SetUndoBudget(undo->value());
        preferences.SetUsesUndoFile(undoFile->isChecked());
        preferences.SetPenPosition(position->currentData().toString());
        preferences.SetEraser(eraser->currentData().toString());
        preferences.SetBarrelButton(barrel->currentData().toString());
    });
}

}  // namespace trovik::studio
