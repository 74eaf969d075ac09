// SPDX-License-Identifier: Apache-2.0
#include "panels/StampTray.h"

#include "commands/Preferences.h"
#include "engine/Engine.h"
#include "framework/brushes/StampFiles.h"
#include "framework/images/ImageFile.h"
#include "framework/images/StampImage.h"
#include "panels/Controls.h"
#include "panels/FlowLayout.h"
#include "panels/SettingControl.h"

#include <QApplication>
#include <QDirIterator>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QPixmap>
#include <QPointer>
#include <QThreadPool>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace trovik::studio {

namespace {

constexpr int tileSide = 56;
/// Images larger than this get no thumbnail.
constexpr std::size_t maxThumbnailBytes = std::size_t{1} << 28;
const QStringList imageFilters{"*.tif", "*.tiff", "*.png", "*.exr", "*.jpg", "*.jpeg"};

bool IsImage(const QString& path) {
    return imageFilters.contains(QStringLiteral("*.") + QFileInfo(path).suffix().toLower());
}

}  // namespace

QImage StampThumbnail(const QString& path, int side) {
    FloatImage read;
    try {
        read = ReadImageFile(path.toStdString(), maxThumbnailBytes);
    } catch (const std::exception&) {
        return {};
    }
    if (read.width == 0 || read.height == 0) return {};
    // In a vector displacement map, the second channel is the height.
    const std::uint32_t channel =
        IsVectorStampName(QFileInfo(path).fileName().toStdString()) && read.channels > 1 ? 1 : 0;
    const double longer = std::max(read.width, read.height);
    const int width =
        std::max(1, static_cast<int>(std::lround(side * static_cast<double>(read.width) / longer)));
    const int height = std::max(
        1, static_cast<int>(std::lround(side * static_cast<double>(read.height) / longer)));
    std::vector<float> values(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // The mean of the image pixels that a thumbnail pixel covers.
            const auto left =
                static_cast<std::uint32_t>(x) * read.width / static_cast<std::uint32_t>(width);
            const auto top =
                static_cast<std::uint32_t>(y) * read.height / static_cast<std::uint32_t>(height);
            const std::uint32_t right = std::max(
                left + 1,
                static_cast<std::uint32_t>(x + 1) * read.width / static_cast<std::uint32_t>(width));
            const std::uint32_t bottom = std::max(top + 1,
                                                  static_cast<std::uint32_t>(y + 1) * read.height /
                                                      static_cast<std::uint32_t>(height));
            double sum = 0.0;
            for (std::uint32_t row = top; row < bottom; ++row)
                for (std::uint32_t column = left; column < right; ++column)
                    sum += static_cast<double>(
                        read.pixels[(std::size_t{row} * read.width + column) * read.channels +
                                    channel]);
            values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x)] =
                static_cast<float>(sum / ((bottom - top) * (right - left)));
        }
    }
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    const float low = *least;
    const float span = std::max(*most - *least, 1e-12f);
    QImage image(width, height, QImage::Format_Grayscale8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.scanLine(y)[x] = static_cast<uchar>(
                std::lround(255.0f *
                            (values[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                    static_cast<std::size_t>(x)] -
                             low) /
                            span));
    return image;
}

StampTray::StampTray(Engine& given, Preferences& stored, QWidget* parent)
    : QWidget(parent), engine(given), preferences(stored) {
    setAccessibleName(tr("Stamps"));
    setAcceptDrops(true);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    auto* images = new Section(tr("Stamps"), this);
    layout->addWidget(images);
    current = MakeHint({}, images);
    images->Body()->addWidget(current);
    tray = new QWidget(images);
    tiles = new FlowLayout(tray, 4);
    tiles->setContentsMargins(0, 0, 0, 0);
    images->Body()->addWidget(tray);
    auto* settings = new Section(TitleOf(SettingGroup::Stamp), this);
    settings->Body()->addWidget(new SettingList(engine, SettingGroup::Stamp, settings));
    layout->addWidget(settings);
    layout->addStretch();
    connect(&preferences, &Preferences::RecentStampsChanged, this, &StampTray::Refill);
    connect(&engine, &Engine::SettingsChanged, this, &StampTray::Refresh);
    Refill();
}

QStringList StampTray::Shown() const {
    QStringList paths = preferences.RecentStamps();
    for (const std::string& folder : StampFolders()) {
        QStringList found;
        QDirIterator files(QString::fromStdString(folder),
                           imageFilters,
                           QDir::Files,
                           QDirIterator::Subdirectories);
        while (files.hasNext()) found.append(files.next());
        found.sort();
        for (const QString& path : found)
            if (!paths.contains(path)) paths.append(path);
    }
    paths.erase(std::remove_if(paths.begin(),
                               paths.end(),
                               [](const QString& path) { return !QFileInfo::exists(path); }),
                paths.end());
    return paths;
}

void StampTray::Refill() {
    while (QLayoutItem* item = tiles->takeAt(0)) {
        item->widget()->deleteLater();
        delete item;
    }
    buttons.clear();
    unloaded = Shown();
    for (const QString& path : unloaded) {
        auto* button = new QToolButton(tray);
        button->setCheckable(true);
        button->setFixedSize(tileSide, tileSide);
        button->setIconSize({tileSide - 8, tileSide - 8});
        button->setFocusPolicy(Qt::NoFocus);
        const QString name = QFileInfo(path).completeBaseName();
        button->setAccessibleName(tr("Stamp %1").arg(name));
        button->setToolTip(
            tr("<b>%1</b><br>Shapes the dabs with this image.").arg(name.toHtmlEscaped()));
        connect(button, &QToolButton::clicked, this, [this, path] { Choose(path); });
        tiles->addWidget(button);
        buttons[path] = button;
    }
    QToolButton* add = MakeIconButton(QStringLiteral("plus"),
                                      tr("Add stamp"),
                                      tr("Adds an image. Images can be dropped here as well."),
                                      tray);
    add->setFixedSize(tileSide, tileSide);
    connect(add, &QToolButton::clicked, this, &StampTray::Browse);
    tiles->addWidget(add);
    if (isVisible()) LoadThumbnails();
    Refresh();
}

void StampTray::LoadThumbnails() {
    for (const QString& path : std::exchange(unloaded, {})) Load(path);
}

void StampTray::Load(const QString& path) {
    const int side = static_cast<int>(tileSide * devicePixelRatioF());
    QPointer<StampTray> self(this);
    QThreadPool::globalInstance()->start([self, path, side] {
        const QImage image = StampThumbnail(path, side);
        QMetaObject::invokeMethod(
            qApp,
            [self, path, image] {
                if (self == nullptr || image.isNull()) return;
                if (QToolButton* button = self->buttons.value(path))
                    button->setIcon(QIcon(QPixmap::fromImage(image)));
            },
            Qt::QueuedConnection);
    });
}

void StampTray::Refresh() {
    const ToolSetting* setting = engine.Setting("stamp.path");
    const ToolSetting* enabled = engine.Setting("stamp.enabled");
    const bool isOn = enabled != nullptr && enabled->value == nlohmann::json(true);
    const std::string name =
        setting != nullptr && setting->value.is_string() ? setting->value.get<std::string>() : "";
    QString file;
    if (const auto found = FindStampFile(name); isOn && found)
        file = QFileInfo(QString::fromStdString(*found)).canonicalFilePath();
    for (auto button = buttons.begin(); button != buttons.end(); ++button)
        button.value()->setChecked(!file.isEmpty() &&
                                   QFileInfo(button.key()).canonicalFilePath() == file);
    current->setText(name.empty() ? tr("The active tool has no stamp. Click a stamp to use it.")
                     : isOn
                         ? tr("In use: %1").arg(QFileInfo(QString::fromStdString(name)).fileName())
                         : tr("Off: %1").arg(QFileInfo(QString::fromStdString(name)).fileName()));
}

void StampTray::Choose(const QString& path) {
    engine.Run({{"set", {{"stamp", {{"path", path.toStdString()}, {"enabled", true}}}}}});
    // Queued, because the list must not change while the clicked button handles its event.
    QMetaObject::invokeMethod(
        this, [this, path] { preferences.AddRecentStamp(path); }, Qt::QueuedConnection);
}

void StampTray::Browse() {
    const QString path =
        QFileDialog::getOpenFileName(window(),
                                     tr("Add Stamp"),
                                     preferences.LastFolder("stamps"),
                                     tr("Images (%1)").arg(imageFilters.join(u' ')));
    if (path.isEmpty()) return;
    preferences.SetLastFolder("stamps", QFileInfo(path).absolutePath());
    Choose(path);
}

// Reading the first image loads the image library, which takes longer than the rest of the startup.
void StampTray::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    LoadThumbnails();
}

void StampTray::dragEnterEvent(QDragEnterEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (std::any_of(
            urls.begin(), urls.end(), [](const QUrl& url) { return IsImage(url.toLocalFile()); }))
        event->acceptProposedAction();
}

void StampTray::dropEvent(QDropEvent* event) {
    for (const QUrl& url : event->mimeData()->urls())
        if (IsImage(url.toLocalFile())) Choose(url.toLocalFile());
    event->acceptProposedAction();
}

}  // namespace trovik::studio
