// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QImage>
#include <QWidget>

class QLabel;
class QToolButton;

namespace trovik::studio {

class Engine;
class FlowLayout;
class Preferences;
class SettingList;

/// Reads a stamp image and scales it down to a grey or coloured thumbnail, with its values
/// stretched to the full range. May be called on any thread. \return a null image if the file
/// cannot be read.
QImage StampThumbnail(const QString& path, int side);

/// Thumbnails of the stamps: first the recently used ones, then those in the stamp folders. A click
/// selects a stamp for the active tool; a dropped image is selected and added to the recent stamps.
/// The tool's stamp settings are below the thumbnails. Images are read on other threads when the
/// tray is first shown.
class StampTray : public QWidget {
    Q_OBJECT
public:
    StampTray(Engine& engine, Preferences& preferences, QWidget* parent = nullptr);

    /// Paths of the displayed stamps.
    QStringList Shown() const;
    /// Selects a stamp for the active tool and adds it to the recent stamps.
    void Choose(const QString& path);

protected:
    void showEvent(QShowEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void Refill();
    void Refresh();
    void LoadThumbnails();
    void Load(const QString& path);
    void Browse();

    Engine& engine;
    Preferences& preferences;
    FlowLayout* tiles;
    QWidget* tray;
    QLabel* current;
    QHash<QString, QToolButton*> buttons;
    /// Stamps whose thumbnails are loaded when the tray is shown.
    QStringList unloaded;
};

}  // namespace trovik::studio
