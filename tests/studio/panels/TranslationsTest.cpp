// SPDX-License-Identifier: Apache-2.0
#include "Translations.h"
#include "tests/studio/panels/StudioWindow.h"

#include <QDataStream>
#include <QFile>
#include <QMenuBar>

#include <map>

namespace trovik::studio {
namespace {

struct Text {
    const char* context;
    const char* source;
    QString translation;
};

/// The hash by which QTranslator looks up a text. ELF files use the same hash for symbol names.
quint32 HashOf(const QByteArray& text) {
    quint32 hash = 0;
    for (const char letter : text) {
        hash = (hash << 4) + static_cast<quint8>(letter);
        const quint32 high = hash & 0xf0000000u;
        if (high != 0) hash ^= high >> 24;
        hash &= ~high;
    }
    return hash != 0 ? hash : 1;
}

/// Writes a compiled translation, which Qt's lrelease makes from a .ts file. The tests do not
/// require that program.
void WriteQm(const QString& path, const std::vector<Text>& texts) {
    enum Tag : quint8 { End = 1, Translation = 3, SourceText = 6, Context = 7 };
    enum Section : quint8 { Hashes = 0x42, Messages = 0x69 };
    QByteArray messages;
    QDataStream writer(&messages, QIODevice::WriteOnly);
    std::multimap<quint32, quint32> offsets;
    for (const Text& text : texts) {
        offsets.emplace(HashOf(text.source), static_cast<quint32>(messages.size()));
        writer << quint8{Translation} << text.translation;
        writer << quint8{SourceText} << QByteArray(text.source);
        writer << quint8{Context} << QByteArray(text.context);
        writer << quint8{End};
    }
    QByteArray hashes;
    QDataStream hashWriter(&hashes, QIODevice::WriteOnly);
    for (const auto& [hash, offset] : offsets) hashWriter << hash << offset;
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("\x3c\xb8\x64\x18\xca\xef\x9c\x95\xcd\x21\x1c\xbf\x60\xa1\xbd\xdd", 16);
    QDataStream sections(&file);
    sections << quint8{Hashes} << hashes << quint8{Messages} << messages;
}

/// A folder with translations into German and French.
struct TranslationFolder {
    TranslationFolder() {
        WriteQm(folder.filePath("trovik-studio_de.qm"),
                {{"trovik::studio::MainWindow", "&File", QStringLiteral("&Datei")},
                 {"ViewActions", "Orthographic", QStringLiteral("Orthografisch")}});
        WriteQm(folder.filePath("trovik-studio_fr.qm"),
                {{"trovik::studio::MainWindow", "&File", QStringLiteral("&Fichier")}});
    }
    std::vector<std::string> Folders() const {
        return {"/no/such/folder", folder.path().toStdString()};
    }

    QTemporaryDir folder;
};

struct GermanText : TranslationFolder {
    Translations translations{{QStringLiteral("de-AT"), QStringLiteral("fr")}, Folders()};
};

class TranslatedWindow : private GermanText, public StudioWindow {};

TEST_F(TranslatedWindow, ShowsTheTextsOfTheTranslation) {
    EXPECT_EQ(window->menuBar()->actions().first()->text(), QStringLiteral("&Datei"));
    EXPECT_EQ(Action("view.orthographic")->text(), QStringLiteral("Orthografisch"));
    // Texts without a translation remain English.
    EXPECT_EQ(window->menuBar()->actions().at(1)->text(), QStringLiteral("&Edit"));
}

TEST_F(StudioWindow, IsEnglishWithoutATranslation) {
    EXPECT_EQ(window->menuBar()->actions().first()->text(), QStringLiteral("&File"));
}

TEST(Translations, UseTheFirstLanguageThatHasOne) {
    const TranslationFolder folder;
    const auto languageOf = [&](const QStringList& languages) {
        return Translations(languages, folder.Folders()).Language();
    };
    EXPECT_EQ(languageOf({"de"}), "de");
    EXPECT_EQ(languageOf({"de-CH"}), "de-CH");
    EXPECT_EQ(languageOf({"it", "fr-FR", "de"}), "fr-FR");
    EXPECT_EQ(languageOf({"it"}), "");
    EXPECT_EQ(languageOf({}), "");
    EXPECT_EQ(languageOf({"en-GB", "de"}), "") << "the source texts are English";
    EXPECT_EQ(languageOf({"C"}), "");
}

}  // namespace
}  // namespace trovik::studio
