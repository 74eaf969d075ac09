// SPDX-License-Identifier: Apache-2.0
#include "framework/files/MaterialFiles.h"

#include "framework/errors/HostError.h"
#include "framework/files/ObjStatement.h"
#include "framework/io/FilePath.h"
#include "framework/io/InputFile.h"
#include "framework/io/OutputFile.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace trovik {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view CopyMark = "# Copied by trovik from ";
constexpr std::uint64_t MaxBytes = std::uint64_t{16} << 20;
constexpr std::string_view Digits = "0123456789";

/// Resolves symbolic links in the existing part of the path, so that relative paths are correct.
fs::path Resolved(const fs::path& path) {
    std::error_code failed;
    fs::path resolved = fs::weakly_canonical(fs::absolute(path, failed), failed);
    return failed ? fs::absolute(path).lexically_normal() : resolved;
}

bool IsBelow(const fs::path& relative) {
    return !relative.empty() && relative.is_relative() && *relative.begin() != "..";
}

/// Returns nothing if the file cannot be read or is not text.
std::optional<std::string> TextOf(const fs::path& path) {
    try {
        if (RegularFileSize(path.string()) > MaxBytes) {
            return std::nullopt;
        }
        InputFile file(path.string());
        const auto size = static_cast<std::size_t>(file.Remaining());
        const unsigned char* bytes = size == 0 ? nullptr : file.Take(size);
        std::string text = bytes == nullptr ? std::string() : std::string(bytes, bytes + size);
        return text.find('\0') == std::string::npos ? std::optional(std::move(text)) : std::nullopt;
    } catch (const HostError&) {
        return std::nullopt;
    }
}

bool NamesTexture(std::string_view keyword) {
    constexpr std::string_view keywords[] = {"bump", "disp", "decal", "refl", "norm"};
    return keyword.starts_with("map_") ||
           std::find(std::begin(keywords), std::end(keywords), keyword) != std::end(keywords);
}

bool IsNumber(std::string_view word) {
    return !word.empty() && word.find_first_not_of("+-.eE0123456789") == std::string_view::npos &&
           word.find_first_of(Digits) != std::string_view::npos;
}

/// Removes the options at the start of a texture statement: words that begin with a dash, each
/// followed by its values. The rest is the file name, which may contain blanks.
void SkipTextureOptions(std::string_view& text) {
    for (;;) {
        std::string_view rest = text;
        const std::string_view option = TakeWord(rest);
        if (!option.starts_with('-') || option.size() < 2) {
            return;
        }
        const bool takesNumbers = option == "-o" || option == "-s" || option == "-t" ||
                                  option == "-mm" || option == "-bm" || option == "-boost" ||
                                  option == "-texres";
        if (!takesNumbers) {
            TakeWord(rest);
        }
        // An option has up to three numbers; trailing ones may be omitted.
        for (int value = 0; takesNumbers && value < 3; ++value) {
            std::string_view after = rest;
            if (!IsNumber(TakeWord(after))) {
                break;
            }
            rest = after;
        }
        text = rest;
    }
}

/// Returns a line of a material file with its texture path made relative to `to` instead of `from`.
std::string Relinked(std::string_view line, const fs::path& from, const fs::path& to) {
    std::string_view rest = line;
    if (!NamesTexture(TakeWord(rest))) {
        return std::string(line);
    }
    SkipTextureOptions(rest);
    std::string name = Trimmed(rest);
    std::replace(name.begin(), name.end(), '\\', '/');
    const bool hasDrive = name.size() > 1 && name[1] == ':';
    if (name.empty() || hasDrive || fs::path(name).is_absolute()) {
        return std::string(line);
    }
    const fs::path texture = (from / name).lexically_normal().lexically_proximate(to);
    return std::string(line.substr(0, line.size() - rest.size())) + " " + texture.generic_string();
}

/// Returns the first line of a copy, which is different for each source.
std::string CopyLine(const fs::path& source, const fs::path& folder) {
    std::string line(CopyMark);
    for (const char letter : source.lexically_proximate(folder).generic_string()) {
        switch (letter) {
            case '\n':
                line += "\\n";
                break;
            case '\r':
                line += "\\r";
                break;
            case '\\':
                line += "\\\\";
                break;
            default:
                line += letter;
        }
    }
    return line + "\n";
}

std::string CopyOf(std::string_view text, const fs::path& source, const fs::path& folder) {
    std::string copy = CopyLine(source, folder);
    while (!text.empty()) {
        const std::size_t end = text.find_first_of("\r\n");
        copy += Relinked(text.substr(0, end), source.parent_path(), folder);
        copy += '\n';
        const bool isPair = end != std::string_view::npos && text.substr(end, 2) == "\r\n";
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + (isPair ? 2 : 1));
    }
    return copy;
}

/// Returns a path for the copy in the folder: that of an earlier copy of this source, or an unused
/// one.
fs::path NameForCopy(const fs::path& source,
                     const fs::path& folder,
                     const std::vector<std::string>& taken) {
    const std::string copyLine = CopyLine(source, folder);
    for (int number = 1;; ++number) {
        const std::string suffix = number == 1 ? "" : "-" + std::to_string(number);
        fs::path path = folder / (source.stem().string() + suffix + source.extension().string());
        std::error_code failed;
        const fs::file_status status = fs::symlink_status(path, failed);
        const bool isTaken = std::find(taken.begin(), taken.end(), path.string()) != taken.end();
        // A symbolic link is not used, because its target may be in another folder.
        if (isTaken || fs::is_symlink(status)) {
            continue;
        }
        if (!fs::exists(status) || TextOf(path).value_or("").starts_with(copyLine)) {
            return path;
        }
    }
}

}  // namespace

PlacedMaterialFiles PlaceMaterialFiles(const std::string& objPath,
                                       const std::vector<std::string>& files) {
    PlacedMaterialFiles placed;
    if (files.empty()) {
        return placed;
    }
    const fs::path shownFolder = fs::path(objPath).parent_path();
    const fs::path folder = Resolved(shownFolder.empty() ? fs::path(".") : shownFolder);
    std::vector<std::string> taken;
    for (const std::string& file : files) {
        const fs::path source = Resolved(file);
        const fs::path relative = source.lexically_proximate(folder);
        std::optional<std::string> text;
        if (!IsBelow(relative) && LowerExtension(source.string()) == ".mtl") {
            text = TextOf(source);
        }
        if (!text) {
            placed.references.push_back(relative.generic_string());
            continue;
        }
        const fs::path target = NameForCopy(source, folder, taken);
        taken.push_back(target.string());
        placed.references.push_back(target.filename().string());
        const std::string content = CopyOf(*text, source, folder);
        if (TextOf(target) == content) {
            continue;
        }
        const std::string shown = (shownFolder / target.filename()).string();
        OutputFile copy(shown);
        copy.Write(content);
        copy.Commit();
        placed.written.push_back(shown);
    }
    return placed;
}

}  // namespace trovik
