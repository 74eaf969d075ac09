// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDateTime>
#include <QDialog>
#include <QImage>

#include <vector>

class QLabel;
class QListWidget;

namespace trovik::studio {

/// Work that can be recovered from a journal.
struct RecoverableWork {
    QString journalPath;
    /// The mesh or scene that the work started from.
    QString source;
    QDateTime time;
    /// Display names of the steps, oldest first.
    QStringList steps;
    /// Null if there is none.
    QImage picture;
    /// Why the journal cannot be read; empty if it can.
    QString problem;
};

/// Reads the journals in a folder that were not closed, newest first. Journals that a running
/// process is writing are omitted. Cost: reads the files. May be called on any thread.
std::vector<RecoverableWork> FindRecoverableWork(const QString& folder);

/// Offers to recover unsaved work.
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
