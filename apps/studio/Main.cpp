// SPDX-License-Identifier: Apache-2.0
#include "CommandLine.h"
#include "StudioApplication.h"
#include "Translations.h"
#include "render/Gl.h"
#include "window/UiWatchdog.h"

#include <QApplication>
#include <QLocale>
#include <QMessageBox>

#include <cstdio>
#include <memory>

namespace {

void PrintTimes(const trovik::studio::UiBusyTimes& times) {
    std::fprintf(stderr,
                 "trovik-studio: UI thread: %llu events, %llu over %.0f ms of processor time; "
                 "longest %.2f ms, with waiting %.2f ms\n",
                 static_cast<unsigned long long>(times.events),
                 static_cast<unsigned long long>(times.overLimit),
                 trovik::studio::UiWatchdogApplication::limitMilliseconds,
                 times.longest.empty() ? 0.0 : times.longest.front().processor,
                 times.longestBusy);
    for (const trovik::studio::UiEvent& event : times.longest)
        std::fprintf(stderr,
                     "%8.2f ms, with waiting %8.2f ms: %s\n",
                     event.processor,
                     event.busy,
                     qPrintable(event.text));
}

}  // namespace

int main(int argc, char** argv) {
    using namespace trovik::studio;
    int status = 0;
    const std::optional<CommandLine> commandLine = ReadCommandLine(argc, argv, status);
    if (!commandLine) return status;
    const std::string platform = PlatformFor(*commandLine);
    if (!platform.empty()) qputenv("QT_QPA_PLATFORM", QByteArray::fromStdString(platform));

    // Arguments are parsed above, because Qt removes those that it recognises.
    int qtArgumentCount = 1;
    // Set to 1 to print how long the UI thread was busy.
    const bool measuresTimes = qEnvironmentVariableIntValue("TROVIK_UI_TIMES") == 1;
    const std::unique_ptr<QApplication> application =
        measuresTimes ? std::make_unique<UiWatchdogApplication>(qtArgumentCount, argv)
                      : std::make_unique<QApplication>(qtArgumentCount, argv);
    // The constructor turns on event compression, which drops most pen samples while the window is
    // busy.
    QCoreApplication::setAttribute(Qt::AA_CompressHighFrequencyEvents, false);
    QCoreApplication::setAttribute(Qt::AA_CompressTabletEvents, false);
    QApplication::setApplicationName(QStringLiteral("trovik-studio"));
    QApplication::setApplicationDisplayName(QStringLiteral("Trovik Studio"));
    QApplication::setApplicationVersion(QStringLiteral(TROVIK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("org.trovik.Studio"));

    const Translations translations(QLocale().uiLanguages(), TranslationFolders());
    if (!IsGlAvailable()) {
        const QString error = QCoreApplication::translate(
            "Main",
            "The display has no OpenGL 3.3. Install a graphics driver, such as Mesa's: on "
            "Debian, the package libgl1-mesa-dri.");
        std::fprintf(stderr, "trovik-studio: %s\n", qPrintable(error));
        if (!commandLine->quits) QMessageBox::critical(nullptr, {}, error);
        return 1;
    }
    StudioApplication studio(*commandLine);
    studio.Start();
    const int result = QApplication::exec();
    if (const auto* watchdog = qobject_cast<UiWatchdogApplication*>(application.get()))
        PrintTimes(watchdog->Times());
    return result;
}
