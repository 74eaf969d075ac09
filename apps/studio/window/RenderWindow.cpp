// SPDX-License-Identifier: Apache-2.0
#include "window/RenderWindow.h"

#include "commands/Preferences.h"
#include "commands/ViewModel.h"
#include "engine/ImageWork.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace trovik::studio {

namespace {

constexpr QSize firstSize(960, 640);

template <typename Control>
Control* Named(Control* control, const QString& name, const QString& tip) {
    control->setAccessibleName(name);
    control->setToolTip(tip);
    return control;
}

}  // namespace

RenderWindow::RenderWindow(const ActionContext& given, QWidget* parent)
    : QDialog(parent), context(given) {
    setWindowTitle(tr("Render"));
    resize(firstSize);
    auto* layout = new QHBoxLayout(this);
    view = Named(new QLabel(this), tr("Rendered image"), tr("The image so far"));
    view->setAlignment(Qt::AlignCenter);
    view->setMinimumSize(240, 180);
    view->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    layout->addWidget(view, 1);
    auto* side = new QWidget(this);
    side->setFixedWidth(15 * fontMetrics().height());
    AddControls(side);
    layout->addWidget(side);

    connect(go, &QPushButton::clicked, this, [this] {
        if (!isRendering) {
            Render();
            return;
        }
        *cancel = true;
        Finish(tr("Cancelled"));
    });
    connect(save, &QPushButton::clicked, this, &RenderWindow::Save);
    connect(shading, &QComboBox::currentIndexChanged, this, &RenderWindow::ShowState);
    connect(&context.engine,
            &Engine::JobProgressed,
            this,
            [this](const QString&, const QString&, quint64 done, quint64 total) {
                if (!isRendering) return;
                progress->setRange(0, total == 0 ? 0 : 1000);
                if (total > 0) progress->setValue(static_cast<int>(done * 1000 / total));
            });
    ShowState();
}

RenderWindow::~RenderWindow() { *cancel = true; }

void RenderWindow::AddControls(QWidget* side) {
    auto* form = new QFormLayout;
    size = Named(new QComboBox(side), tr("Size"), tr("Width and height of the image"));
    for (const int multiple : {1, 2, 4})
        size->addItem(multiple == 1 ? tr("Viewport") : tr("Viewport × %1").arg(multiple), multiple);
    size->addItem(QStringLiteral("1920 × 1080"), QSize(1920, 1080));
    size->addItem(QStringLiteral("3840 × 2160"), QSize(3840, 2160));
    size->addItem(QStringLiteral("2048 × 2048"), QSize(2048, 2048));
    form->addRow(tr("Size"), size);
    shading = Named(new QComboBox(side), tr("Shading"), tr("How the surface is coloured"));
    const std::pair<QString, ShadingMode> modes[] = {
        {tr("Clay with shadows"), ShadingMode::Clay},
        {tr("Clay, flat faces"), ShadingMode::Flat},
        {tr("Matcap"), ShadingMode::Matcap},
        {tr("Cavities and ridges"), ShadingMode::Cavity},
        {tr("Normals"), ShadingMode::Normals}};
    for (const auto& [text, mode] : modes) shading->addItem(text, static_cast<int>(mode));
    form->addRow(tr("Shading"), shading);
    matcap = Named(new QComboBox(side), tr("Matcap"), tr("The material of the surface"));
    for (const MatcapName& name : MatcapTitles()) matcap->addItem(name.title, name.name);
    matcap->setCurrentIndex(matcap->findData(context.view.Settings().matcap));
    form->addRow(tr("Matcap"), matcap);
    samples = Named(new QComboBox(side),
                    tr("Samples"),
                    tr("Rays per pixel; more rays give smoother shadows but take longer"));
    for (const int count : {4, 16, 64, 256}) samples->addItem(QString::number(count), count);
    samples->setCurrentIndex(1);
    form->addRow(tr("Samples"), samples);
    wireframe = Named(
        new QCheckBox(tr("Wireframe"), side), tr("Wireframe"), tr("Draws the edges of the faces"));
    transparent = Named(new QCheckBox(tr("Transparent background"), side),
                        tr("Transparent background"),
                        tr("Leaves out the background"));
    form->addRow(wireframe);
    form->addRow(transparent);
    message = new QLabel(side);
    message->setWordWrap(true);
    message->setObjectName(QStringLiteral("hint"));
    progress = Named(new QProgressBar(side), tr("Progress"), tr("Progress of the render"));
    progress->setTextVisible(false);
    go = new QPushButton(side);
    save =
        Named(new QPushButton(tr("Save As PNG…"), side), tr("Save As PNG"), tr("Saves the image"));
    auto* close = Named(new QPushButton(tr("Close"), side), tr("Close"), tr("Closes the window"));
    connect(close, &QPushButton::clicked, this, &QDialog::close);
    auto* layout = new QVBoxLayout(side);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(form);
    layout->addWidget(message);
    layout->addStretch();
    layout->addWidget(progress);
    layout->addWidget(go);
    layout->addWidget(save);
    layout->addWidget(close);
    go->setDefault(true);
}

void RenderWindow::Render() {
    *cancel = true;
    const QImage frame = context.view.grab ? context.view.grab() : QImage();
    const QSize viewport = frame.isNull() ? firstSize : frame.size();
    const QVariant chosen = size->currentData();
    const QSize pixels =
        chosen.typeId() == QMetaType::QSize ? chosen.toSize() : viewport * chosen.toInt();
    RenderOptions options;
    options.width = pixels.width();
    options.height = pixels.height();
    options.samples = samples->currentData().toInt();
    options.shading = static_cast<ShadingMode>(shading->currentData().toInt());
    if (options.shading == ShadingMode::Matcap)
        options.matcap = matcap->currentData().toString().toStdString();
    options.wireframe = wireframe->isChecked();
    options.transparent = transparent->isChecked();
    isRendering = true;
    picture = {};
    message->clear();
    ShowState();
    cancel = std::make_shared<std::atomic<bool>>(false);
    context.engine.Compute(
        tr("Render"),
        RenderWork(options),
        cancel,
        [this](const QImage& image) {
            shown = image;
            ShowImage();
        },
        [this](const QString& error) { Finish(error); });
}

void RenderWindow::Finish(const QString& error) {
    isRendering = false;
    message->setText(error);
    if (error.isEmpty()) {
        picture = shown;
        message->setText(tr("%1 × %2 pixels").arg(picture.width()).arg(picture.height()));
    }
    ShowState();
}

void RenderWindow::ShowState() {
    const bool isMatcap = shading->currentData().toInt() == static_cast<int>(ShadingMode::Matcap);
    matcap->setEnabled(isMatcap);
    progress->setVisible(isRendering);
    if (!isRendering) progress->setValue(0);
    go->setText(isRendering ? tr("Cancel") : tr("Render"));
    go->setAccessibleName(go->text());
    go->setToolTip(isRendering ? tr("Stops the render")
                               : tr("Renders the current view of the viewport"));
    save->setEnabled(!picture.isNull());
}

void RenderWindow::ShowImage() {
    if (shown.isNull()) return;
    const QSize room = view->size() * devicePixelRatioF();
    QPixmap pixmap =
        QPixmap::fromImage(shown.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    view->setPixmap(pixmap);
}

void RenderWindow::resizeEvent(QResizeEvent* event) {
    QDialog::resizeEvent(event);
    ShowImage();
}

void RenderWindow::Save() {
    const QString purpose = QStringLiteral("screenshot");
    QString path = QFileDialog::getSaveFileName(
        this,
        tr("Save Render"),
        QDir(context.preferences.LastFolder(purpose)).filePath(QStringLiteral("render.png")),
        tr("PNG (*.png)"));
    if (path.isEmpty()) return;
    if (QFileInfo(path).suffix().isEmpty()) path += QStringLiteral(".png");
    context.preferences.SetLastFolder(purpose, QFileInfo(path).absolutePath());
    message->setText(picture.save(path) ? tr("Saved %1").arg(path)
                                        : tr("%1: the image could not be written").arg(path));
}

}  // namespace trovik::studio
