// SPDX-License-Identifier: Apache-2.0
#include "commands/KeymapEditor.h"

#include "commands/ActionCategories.h"
#include "commands/ActionRegistry.h"
#include "commands/Keymap.h"
#include "resources/Icons.h"

#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <map>
#include <vector>

namespace trovik::studio {

namespace {

constexpr int idRole = Qt::UserRole;

QString KeyText(const QList<QKeySequence>& keys) {
    QStringList texts;
    for (const QKeySequence& key : keys) texts.append(key.toString(QKeySequence::NativeText));
    return texts.join(QStringLiteral(",  "));
}

bool IsModifier(int key) {
    return key == Qt::Key_Shift || key == Qt::Key_Control || key == Qt::Key_Alt ||
           key == Qt::Key_Meta;
}

}  // namespace

KeymapEditor::KeymapEditor(ActionRegistry& registry, Keymap& map, QWidget* parent)
    : QDialog(parent), actions(registry), keymap(map) {
    setWindowTitle(tr("Keymap"));
    resize(680, 560);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(MakeTopRow());
    list = new QTreeWidget(this);
    list->setAccessibleName(tr("Actions and keys"));
    list->setToolTip(tr("Double-click an action, then press its new key"));
    list->setHeaderLabels({tr("Action"), tr("Key")});
    list->setRootIsDecorated(true);
    list->setUniformRowHeights(true);
    list->setAlternatingRowColors(true);
    list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list->header()->setStretchLastSection(false);
    list->header()->resizeSection(1, 200);
    list->installEventFilter(this);
    layout->addWidget(list);
    message = new QLabel(this);
    message->setObjectName(QStringLiteral("hint"));
    message->setMinimumHeight(message->fontMetrics().height() * 2);
    message->setWordWrap(true);
    message->setAccessibleName(tr("Message"));
    layout->addWidget(message);
    layout->addWidget(MakeButtons());
    connect(list, &QTreeWidget::itemDoubleClicked, this, [this](QTreeWidgetItem* item) {
        const QString id = item->data(0, idRole).toString();
        if (!id.isEmpty()) Capture(id);
    });
    connect(list, &QTreeWidget::currentItemChanged, this, [this] { StopCapture(); });
    connect(&actions, &ActionRegistry::KeysChanged, this, &KeymapEditor::ShowKeys);
    Refill();
    Say(tr("Double-click an action to give it another key."));
}

QWidget* KeymapEditor::MakeTopRow() {
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    search = new QLineEdit(row);
    search->setPlaceholderText(tr("Search actions or keys"));
    search->setAccessibleName(tr("Search"));
    search->setToolTip(tr("Shows the actions whose name, description or key contains this text"));
    search->setClearButtonEnabled(true);
    search->addAction(Icon(QStringLiteral("search")), QLineEdit::LeadingPosition);
    presets = new QComboBox(row);
    presets->setAccessibleName(tr("Preset"));
    presets->setToolTip(tr("Replaces all keys with those of a preset"));
    for (const QString& preset : Keymap::Presets())
        presets->addItem(Keymap::PresetTitle(preset), preset);
    presets->setCurrentIndex(presets->findData(keymap.Preset()));
    layout->addWidget(search, 1);
    layout->addWidget(new QLabel(tr("Preset"), row));
    layout->addWidget(presets);
    connect(search, &QLineEdit::textChanged, this, &KeymapEditor::Refill);
    connect(presets, &QComboBox::activated, this, [this](int index) {
        StopCapture();
        keymap.SetPreset(presets->itemData(index).toString());
        Say(tr("All keys now match the preset %1.").arg(presets->itemText(index)));
    });
    return row;
}

QWidget* KeymapEditor::MakeButtons() {
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto add = [&](const QString& text, const QString& tip, auto slot) {
        auto* button = new QPushButton(text, row);
        button->setToolTip(tip);
        button->setAccessibleName(text);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, slot);
        layout->addWidget(button);
        return button;
    };
    reset = add(tr("Reset"), tr("Resets the selected action's key to that of the preset"), [this] {
        const QString id = SelectedId();
        if (id.isEmpty()) return;
        StopCapture();
        const QStringList losers = keymap.Reset(id);
        if (losers.isEmpty()) return;
        Say(tr("%1 lost its key.").arg(actions.Info(losers.first())->text));
    });
    add(tr("Reset All"), tr("Resets all keys to those of the preset"), [this] {
        StopCapture();
        keymap.SetPreset(keymap.Preset());
        Say(tr("All keys now match the preset."));
    });
    layout->addStretch();
    add(tr("Import…"), tr("Reads a keymap file"), [this] { ImportFile(); });
    add(tr("Export…"), tr("Writes the keymap to a file"), [this] { ExportFile(); });
    add(tr("Close"), tr("Closes the keymap; changes are already stored"), [this] { accept(); });
    return row;
}

void KeymapEditor::ImportFile() {
    const QString path =
        QFileDialog::getOpenFileName(this, tr("Import Keymap"), {}, tr("Keymaps (*.json)"));
    if (path.isEmpty()) return;
    const QString error = keymap.Import(path);
    presets->setCurrentIndex(presets->findData(keymap.Preset()));
    Say(error.isEmpty() ? tr("Imported %1.").arg(path) : error);
}

void KeymapEditor::ExportFile() {
    const QString path = QFileDialog::getSaveFileName(
        this, tr("Export Keymap"), QStringLiteral("keymap.json"), tr("Keymaps (*.json)"));
    if (path.isEmpty()) return;
    const QString error = keymap.Export(path);
    Say(error.isEmpty() ? tr("Wrote %1.").arg(path) : error);
}

void KeymapEditor::Refill() {
    StopCapture();
    list->clear();
    const QString wanted = search->text().trimmed();
    std::map<QString, QTreeWidgetItem*> groups;
    const std::vector<ActionInfo> infos = InMenuOrder(actions.Infos());
    for (const ActionInfo& info : infos) {
        const bool matches = wanted.isEmpty() || info.text.contains(wanted, Qt::CaseInsensitive) ||
                             info.description.contains(wanted, Qt::CaseInsensitive) ||
                             KeyText(actions.Keys(info.id)).contains(wanted, Qt::CaseInsensitive);
        if (!matches) continue;
        const QString category = CategoryTitle(info);
        QTreeWidgetItem*& group = groups[category];
        if (group == nullptr) {
            group = new QTreeWidgetItem(list, {category});
            group->setFirstColumnSpanned(true);
            group->setFlags(Qt::ItemIsEnabled);
            group->setExpanded(true);
        }
        auto* item = new QTreeWidgetItem(group, {info.text});
        item->setData(0, idRole, info.id);
        item->setIcon(0, Icon(info.icon));
        item->setToolTip(0, info.description);
    }
    ShowKeys();
}

void KeymapEditor::ShowKeys() {
    for (int group = 0; group < list->topLevelItemCount(); ++group) {
        QTreeWidgetItem* parent = list->topLevelItem(group);
        for (int row = 0; row < parent->childCount(); ++row) {
            QTreeWidgetItem* item = parent->child(row);
            const QString id = item->data(0, idRole).toString();
            QString text = KeyText(actions.Keys(id));
            if (actions.IsHeld(id) && !text.isEmpty()) text += tr("  (hold)");
            item->setText(1, id == capturing ? tr("press a key …") : text);
            QFont font = item->font(1);
            font.setBold(keymap.IsChanged(id));
            item->setFont(1, font);
        }
    }
}

void KeymapEditor::Search(const QString& text) { search->setText(text); }

QString KeymapEditor::SelectedId() const {
    const QTreeWidgetItem* item = list->currentItem();
    return item == nullptr ? QString() : item->data(0, idRole).toString();
}

void KeymapEditor::Capture(const QString& id) {
    const QList<QTreeWidgetItem*> rows =
        list->findItems({}, Qt::MatchContains | Qt::MatchRecursive);
    for (QTreeWidgetItem* item : rows) {
        if (item->data(0, idRole).toString() != id) continue;
        list->setCurrentItem(item);
        list->scrollToItem(item);
        capturing = id;
        contested = {};
        list->setFocus();
        ShowKeys();
        Say(tr("Press the key for %1. Backspace removes the key; Escape keeps it.")
                .arg(actions.Info(id)->text));
    }
}

QString KeymapEditor::Message() const { return message->text(); }

void KeymapEditor::Say(const QString& text) { message->setText(text); }

void KeymapEditor::StopCapture() {
    if (capturing.isEmpty()) return;
    capturing.clear();
    contested = {};
    ShowKeys();
}

void KeymapEditor::TakeKey(const QKeySequence& key) {
    const QString id = capturing;
    const QString owner = actions.Owner(key);
    const QString shown = key.toString(QKeySequence::NativeText);
    if (!owner.isEmpty() && owner != id && contested != key) {
        contested = key;
        Say(tr("%1 is already assigned to %2. Press it again to reassign it, or press another key.")
                .arg(shown, actions.Info(owner)->text));
        return;
    }
    StopCapture();
    keymap.Bind(id, {key});
    Say(owner.isEmpty() || owner == id
            ? tr("%1 now has the key %2.").arg(actions.Info(id)->text, shown)
            : tr("%1 now has the key %2. %3 has lost it.")
                  .arg(actions.Info(id)->text, shown, actions.Info(owner)->text));
}

bool KeymapEditor::event(QEvent* event) {
    // While the editor waits for a key, the application's shortcuts must not respond to it.
    if (event->type() == QEvent::ShortcutOverride && !capturing.isEmpty()) {
        event->accept();
        return true;
    }
    return QDialog::event(event);
}

bool KeymapEditor::eventFilter(QObject* watched, QEvent* event) {
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
    if (event->type() == QEvent::ShortcutOverride && !capturing.isEmpty()) {
        event->accept();
        return true;
    }
    if (!isKey) return QDialog::eventFilter(watched, event);
    const auto* pressed = static_cast<QKeyEvent*>(event);
    if (capturing.isEmpty()) {
        if (event->type() == QEvent::KeyPress &&
            (pressed->key() == Qt::Key_Return || pressed->key() == Qt::Key_F2)) {
            if (!SelectedId().isEmpty()) Capture(SelectedId());
            return true;
        }
        return QDialog::eventFilter(watched, event);
    }
    // A single modifier is accepted only on release, because it may begin a combination.
    const bool wantsRelease = IsModifier(pressed->key());
    if (event->type() == QEvent::KeyPress) isCombination = !wantsRelease;
    if (wantsRelease && isCombination) return true;
    if (wantsRelease != (event->type() == QEvent::KeyRelease)) return true;
    if (pressed->key() == Qt::Key_Escape) {
        StopCapture();
        Say(tr("The key was not changed."));
    } else if (pressed->key() == Qt::Key_Backspace) {
        const QString id = capturing;
        StopCapture();
        keymap.Bind(id, {});
        Say(tr("%1 no longer has a key.").arg(actions.Info(id)->text));
    } else if (wantsRelease) {
        if (!actions.IsHeld(capturing)) return true;
        TakeKey(QKeySequence(pressed->key()));
    } else if (pressed->key() != 0 && pressed->key() != Qt::Key_unknown) {
        TakeKey(QKeySequence(pressed->keyCombination()));
    }
    return true;
}

}  // namespace trovik::studio
