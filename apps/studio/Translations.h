// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringList>
#include <QTranslator>

#include <string>
#include <vector>

namespace trovik::studio {

/// The folders with translations (trovik-studio_LOCALE.qm), in search order. The environment
/// variable TROVIK_TRANSLATION_PATH, a list of folders separated by colons, replaces them.
std::vector<std::string> TranslationFolders();

/// Shows the user interface in the user's language for as long as the object exists. Create it
/// after the QApplication and before any text is shown.
class Translations {
public:
    /// Installs the translation for the first of the languages that has one, together with Qt's own
    /// translation into that language. English needs no translation, so languages listed after it
    /// are not used. If there is no translation, all texts are English.
    /// \param languages  in order of preference, such as "de-AT"; see QLocale::uiLanguages.
    Translations(const QStringList& languages, const std::vector<std::string>& folders);
    Translations(const Translations&) = delete;
    Translations& operator=(const Translations&) = delete;

    /// The language of the translation, as in the list; empty for English.
    const QString& Language() const { return language; }

private:
    bool Install(const QString& wanted, const std::vector<std::string>& folders);

    QTranslator application;
    QTranslator qt;
    QString language;
};

}  // namespace trovik::studio
