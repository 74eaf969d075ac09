// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QWidget>

#include <functional>
#include <memory>

class QLabel;
class QToolButton;

namespace trovik::studio {

class FrameWriter;
class Preferences;
class ScriptPlayer;
class ValueSlider;

/// Controls of a script player: play, pause, step, stop, the speed, and a switch that saves an
/// image of each dab as it is shown.
class ScriptBar : public QWidget {
    Q_OBJECT
public:
    /// \param grab  returns the frame that shows the document.
    ScriptBar(ScriptPlayer& player,
              std::function<QImage()> grab,
              Preferences& preferences,
              QWidget* parent);
    ~ScriptBar() override;

    /// Saves an image of each dab to a folder until EndFilm is called or the script ends.
    void BeginFilm(const QString& folder);
    /// Waits until all frames are written.
    void EndFilm();

private:
    void ToggleFilm();
    void TakeFrame();
    void Refresh();

    ScriptPlayer& player;
    std::function<QImage()> grab;
    Preferences& preferences;
    QToolButton* play;
    QToolButton* step;
    QToolButton* stop;
    QToolButton* film;
    ValueSlider* speed;
    QLabel* text;
    std::unique_ptr<FrameWriter> frames;
    /// The result of the last film.
    QString report;
};

}  // namespace trovik::studio
