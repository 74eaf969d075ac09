// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.h"
#include "StudioApplication.h"

#include <QApplication>

int main(int argc, char** argv) {
    using namespace trovik::studio;
    int status = 0;
    const std::optional<CommandLine> commandLine = ReadCommandLine(argc, argv, status);
    if (!commandLine) return status;
    const std::string platform = PlatformFor(*commandLine);
    if (!platform.empty()) qputenv("QT_QPA_PLATFORM", QByteArray::fromStdString(platform));

    // Arguments are parsed above, because Qt removes those that it recognises.
    int qtArgumentCount = 1;
    QApplication application(qtArgumentCount, argv);
    // The constructor turns on event compression, which drops most pen samples while the window is
    // busy.
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    QCoreApplication::setAttribute(Qt::AA_CompressTabletEvents, false);
    QApplication::setApplicationName(QStringLiteral("trovik-studio"));
    QApplication::setApplicationDisplayName(QStringLiteral("Trovik Studio"));
    QApplication::setApplicationVersion(QStringLiteral(TROVIK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.trovik.Studio"));

    StudioApplication studio(*commandLine);
    studio.Start();
    return QApplication::exec();
}
