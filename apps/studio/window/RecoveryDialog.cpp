// SPDX-License-Identifier: Apache-2.0
#include "window/RecoveryDialog.h"

#include "engine/JournalFolder.h"
#include "framework/io/FileLock.h"
#include "framework/journal/JournalContent.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace trovik::studio {

namespace {

/// The text of a step in the list: the label of its undo step, or the names of its fields.
QString StepText(const JournalStep& step) {
    QString text = QString::fromStdString(step.label);
    if (text.isEmpty() && step.step.is_object()) {
        QStringList names;
        for (const auto& [name, value] : step.step.items())
            names.append(QString::fromStdString(name));
        text = names.join(QStringLiteral(", "));
    }
    if (text.isEmpty()) text = RecoveryDialog::tr("Stroke");
    if (step.dabs == 1) return RecoveryDialog::tr("%1, 1 dab").arg(text);
    if (step.dabs > 1) return RecoveryDialog::tr("%1, %2 dabs").arg(text).arg(step.dabs);
    return text;
}

RecoverableWork Describe(const QFileInfo& file) {
    RecoverableWork work;
    work.journalPath = file.absoluteFilePath();
    work.time = file.lastModified();
    const QString imagePath = file.absolutePath() + '/' + file.completeBaseName() + ".png";
    if (QFileInfo::exists(imagePath)) work.picture = QImage(imagePath);
    try {
        const JournalContent content = ReadJournal(work.journalPath.toStdString(), true);
        if (content.isClosed) work.problem = QStringLiteral("closed");
        work.source = QString::fromStdString(content.base.source);
        const std::optional<std::size_t> saved = SavedSteps(content);
        for (std::size_t i = saved.value_or(0); i < content.steps.size(); ++i)
            if (IsChange(content.steps[i])) work.steps.append(StepText(content.steps[i]));
        if (work.steps.isEmpty() && HasUnsavedWork(content, saved))
            work.steps.append(RecoveryDialog::tr("Work from before the start of the journal"));
    } catch (const std::exception& error) {
        work.problem = QString::fromUtf8(error.what());
    }
    return work;
}

}  // namespace

std::vector<RecoverableWork> FindRecoverableWork(const QString& folder) {
    std::vector<RecoverableWork> works;
    const QFileInfoList files =
        QDir(folder).entryInfoList({QStringLiteral("*.journal")}, QDir::Files, QDir::Time);
    for (const QFileInfo& file : files) {
        // The process ended before the journal was complete, so it contains no step.
        if (file.fileName().contains(QLatin1String(".part."))) continue;
        // A locked journal is still being written by a process.
        if (FileLock(file.absoluteFilePath().toStdString()).State() == FileLock::Result::Busy)
            continue;
        RecoverableWork work = Describe(file);
        // A closed journal, or one without steps, contains no unsaved work.
        if (work.problem == QLatin1String("closed")) continue;
        if (work.problem.isEmpty() && work.steps.isEmpty()) continue;
        works.push_back(std::move(work));
    }
    return works;
}

RecoveryDialog::RecoveryDialog(std::vector<RecoverableWork> given, QWidget* parent)
    : QDialog(parent), works(std::move(given)) {
    setWindowTitle(tr("Recover Work"));
    resize(720, 440);
    auto* layout = new QVBoxLayout(this);
    auto* intro =
        new QLabel(tr("The studio stopped before this work was saved. Everything up to the "
                      "last finished dab can "
                      "be recovered."),
                   this);
    intro->setWordWrap(true);
    layout->addWidget(intro);
    auto* columns = new QHBoxLayout;
    layout->addLayout(columns, 1);
    list = new QListWidget(this);
    list->setAccessibleName(tr("Unsaved work"));
    list->setToolTip(tr("Select the session to recover"));
    columns->addWidget(list, 2);
    auto* right = new QVBoxLayout;
    columns->addLayout(right, 3);
    picture = new QLabel(this);
    picture->setAlignment(Qt::AlignCenter);
    picture->setAccessibleName(tr("Image of the work"));
    details = new QLabel(this);
    details->setWordWrap(true);
    details->setObjectName(QStringLiteral("hint"));
    steps = new QListWidget(this);
    steps->setAccessibleName(tr("Steps"));
    steps->setToolTip(tr("Steps since the document was opened or saved, newest first"));
    steps->setSelectionMode(QAbstractItemView::NoSelection);
    right->addWidget(picture);
    right->addWidget(details);
    right->addWidget(steps, 1);
    for (const RecoverableWork& work : works)
        list->addItem(QFileInfo(work.source.isEmpty() ? work.journalPath : work.source).fileName() +
                      u'\n' + QLocale().toString(work.time, QLocale::ShortFormat));
    auto* buttons = new QDialogButtonBox(this);
    recover = buttons->addButton(tr("Recover"), QDialogButtonBox::AcceptRole);
    recover->setToolTip(tr("Restores the work and opens it"));
    static_cast<QPushButton*>(recover)->setDefault(true);
    auto* later = buttons->addButton(tr("Later"), QDialogButtonBox::RejectRole);
    later->setToolTip(tr("Keeps the journals; asks again at the next start"));
    auto* discard = buttons->addButton(tr("Discard"), QDialogButtonBox::DestructiveRole);
    discard->setToolTip(tr("Deletes the journal of the selected session"));
    // An accidental key press must not discard work.
    discard->setAutoDefault(false);
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] {
        choice = Choice::Recover;
        accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(discard, &QPushButton::clicked, this, [this] {
        choice = Choice::Discard;
        accept();
    });
    connect(list, &QListWidget::currentRowChanged, this, &RecoveryDialog::ShowWork);
    list->setCurrentRow(0);
    recover->setFocus();
}

QString RecoveryDialog::Journal() const {
    const int row = list->currentRow();
    return row < 0 ? QString() : works[static_cast<std::size_t>(row)].journalPath;
}

void RecoveryDialog::ShowWork() {
    const int row = list->currentRow();
    if (row < 0) return;
    const RecoverableWork& work = works[static_cast<std::size_t>(row)];
    picture->setVisible(!work.picture.isNull());
    if (!work.picture.isNull())
        picture->setPixmap(QPixmap::fromImage(work.picture)
                               .scaled(380, 220, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    details->setText(work.problem.isEmpty()
                         ? tr("%1\nSteps: %2").arg(work.source).arg(work.steps.size())
                         : work.problem);
    recover->setEnabled(work.problem.isEmpty());
    steps->clear();
    for (auto step = work.steps.rbegin(); step != work.steps.rend(); ++step) steps->addItem(*step);
}

}  // namespace trovik::studio
