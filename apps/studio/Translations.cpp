// SPDX-License-Identifier: Apache-2.0
#include "Translations.h"

#include "framework/io/ResourceFolders.h"

#include <QCoreApplication>
#include <QLibraryInfo>

#include <algorithm>

namespace trovik::studio {

std::vector<std::string> TranslationFolders() {
    return ResourceFolders(
        "TROVIK_TRANSLATION_PATH",
        {TROVIK_INSTALLED_TRANSLATION_DIR_FROM_BIN, TROVIK_TRANSLATION_DIR_FROM_BIN});
}

Translations::Translations(const QStringList& languages, const std::vector<std::string>& folders) {
    for (const QString& wanted : languages) {
        const QString code = wanted.section(u'-', 0, 0);
        if (code == QLatin1String("en") || code == QLatin1String("C")) return;
        if (Install(wanted, folders)) return;
    }
}

bool Translations::Install(const QString& wanted, const std::vector<std::string>& folders) {
    // Files are named with an underscore. For "de_AT", QTranslator also finds the file for "de".
    const QString suffix = u'_' + QString(wanted).replace(u'-', u'_');
    const bool isFound =
        std::any_of(folders.begin(), folders.end(), [&](const std::string& folder) {
            return application.load(QStringLiteral("trovik-studio") + suffix,
                                    QString::fromStdString(folder));
        });
    if (!isFound) return false;
    QCoreApplication::installTranslator(&application);
    if (qt.load(QStringLiteral("qtbase") + suffix,
                QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(&qt);
    language = wanted;
    return true;
}

}  // namespace trovik::studio
