// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "engine/EngineMessages.h"

#include <QString>
#include <nlohmann/json.hpp>

#include <vector>

namespace trovik::studio {

/// A stroke script, ready to run in the studio.
struct ScriptFile {
    struct Step {
        nlohmann::json step;
        /// The names of its commands.
        QString text;
    };

    QString path;
    /// Whether it opens a document, with `request`. Otherwise it runs on the open document.
    bool opens = false;
    OpenRequest request;
    /// Omits steps that contain only a comment. If the script opens no document, its setup comes
    /// first, as steps. File names are absolute if the script's folder contains the file.
    std::vector<Step> steps;
};

/// Reads and checks a script, which can take seconds. May be called on any thread. \throw HostError
/// with the file and the reason, also for fields that the studio does not support.
ScriptFile ReadScriptFile(const QString& path);

}  // namespace trovik::studio
