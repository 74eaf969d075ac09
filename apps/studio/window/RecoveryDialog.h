// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDateTime>
#include <QDialog>
#include <QImage>

#include <vector>

class QLabel;
class QListWidget;

namespace trovik::studio {

/// Work that a journal holds.
struct RecoverableWork {
    QString journalPath;
    /// The mesh or scene that the work started from.
    QString source;
    QDateTime time;
    /// As a user reads them, the oldest first.
    QStringList steps;
    /// Null if there is none.
    QImage picture;
    /// Why the journal cannot be read; empty if it can.
    QString problem;
};

/// Reads the journals of a folder whose process did not close them, the newest first. Journals that
/// a running process writes are left out. Cost: reads the files. May be called on any thread.
std::vector<RecoverableWork> FindRecoverableWork(const QString& folder);

/// Offers work that was not saved.
class RecoveryDialog : public QDialog {
    Q_OBJECT
public:
    enum class Choice { Recover, Later, Discard };

    RecoveryDialog(std::vector<RecoverableWork> works, QWidget* parent = nullptr);

    /// The journal that the user chose; empty if none.
    QString Journal() const;
    Choice Chosen() const { return choice; }

private:
    void ShowWork();

    std::vector<RecoverableWork> works;
    QListWidget* list;
    QListWidget* steps;
    QLabel* picture;
    QLabel* details;
    QWidget* recover;
    Choice choice = Choice::Later;
};

}  // namespace trovik::studio
