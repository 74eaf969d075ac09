// SPDX-License-Identifier: Apache-2.0
#include "framework/history/UndoPreferences.h"

#include "framework/history/UndoHistory.h"
#include "host/Preferences.h"

#include <filesystem>

namespace trovik {

namespace {

constexpr float defaultMiB = 1024.0f;
constexpr float maxMiB = 1024.0f * 1024.0f;
constexpr double bytesPerMiB = 1024.0 * 1024.0;

QString Ascii(const char* text) { return QString::fromLatin1(text); }

const Preferences::Float& Budget() {
    static const Preferences::Float budget(Ascii("Undo Budget"),
                                           Ascii("General"),
                                           Ascii("Undo Budget (MiB)"),
                                           Ascii("General"),
                                           defaultMiB,
                                           1.0f,
                                           maxMiB,
                                           false);
    return budget;
}

const Preferences::Bool& File() {
    static const Preferences::Bool file(Ascii("Undo File"),
                                        Ascii("General"),
                                        Ascii("Store Undo Steps Beyond the Budget in a File"),
                                        Ascii("General"),
                                        false,
                                        true);
    return file;
}

}  // namespace

void RegisterUndoPreferences() {
    Budget();
    File();
}

void ApplyUndoPreferences(UndoHistory& history) {
    history.SetBudget(static_cast<uint64_t>(static_cast<double>(Budget()) * bytesPerMiB));
    std::error_code none;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(none);
    history.SetSpillFolder(File() ? (none ? "/tmp" : folder.string()) : std::string());
}

}  // namespace trovik
