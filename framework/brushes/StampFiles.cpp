// SPDX-License-Identifier: Apache-2.0
#include "framework/brushes/StampFiles.h"

#include "framework/brushes/BrushSettings.h"
#include "framework/images/StampImage.h"
#include "framework/io/ResourceFolders.h"

#include <filesystem>

namespace trovik {

namespace {

namespace fs = std::filesystem;

/// The folder name with which the tools' default stamp names begin.
constexpr const char* toolFolder = "Stamps";
constexpr const char* extensions[] = {".tif", ".tiff", ".png", ".exr", ".jpg", ".jpeg"};

std::optional<std::string> FileAt(const fs::path& path) {
    std::error_code ignored;
    if (fs::is_regular_file(path, ignored)) return path.lexically_normal().string();
    if (path.has_extension()) return std::nullopt;
    for (const char* extension : extensions) {
        fs::path file = path;
        file += extension;
        if (fs::is_regular_file(file, ignored)) return file.lexically_normal().string();
    }
    return std::nullopt;
}

}  // namespace

std::vector<std::string> StampFolders() {
    return ResourceFolders("TROVIK_STAMP_PATH",
                           {TROVIK_INSTALLED_STAMP_DIR_FROM_BIN, TROVIK_STAMP_DIR_FROM_BIN});
}

std::optional<std::string> FindStampFile(const std::string& name) {
    const fs::path path(name);
    if (!path.has_filename()) return std::nullopt;
    if (path.is_absolute()) return FileAt(path);
    for (const std::string& folder : StampFolders()) {
        for (const fs::path& candidate :
             {path, path.filename(), fs::path(toolFolder) / path.filename()}) {
            if (auto file = FileAt(fs::path(folder) / candidate)) return file;
        }
    }
    return std::nullopt;
}

void RefreshStamp(BrushOperation& brush) {
    BrushOperation::Private& settings = brush.Settings();
    if (!settings.stamp.enabled || settings.stamp.path.isEmpty()) return;
    if (const auto file = FindStampFile(settings.stamp.path.toStdString())) {
        settings.stampImage = StampCache::Instance().Get(*file);
        settings.stampImagePath = settings.stamp.path;
        settings.cachedStampImages[settings.stamp.path] = settings.stampImage;
    }
}

}  // namespace trovik
