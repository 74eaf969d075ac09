// SPDX-License-Identifier: Apache-2.0
#include "commands/ActionCategories.h"

#include <algorithm>
#include <iterator>

namespace trovik::studio {

namespace {

/// Categories that are not listed follow at the end.
constexpr const char* categories[] = {"file",
                                      "script",
                                      "edit",
                                      "tool",
                                      "brush",
                                      "stroke",
                                      "level",
                                      "layer",
                                      "mask",
                                      "visibility",
                                      "group",
                                      "symmetry",
                                      "surface",
                                      "view",
                                      "reference",
                                      "panel",
                                      "undock",
                                      "window",
                                      "help"};

QString CategoryOf(const ActionInfo& info) { return info.id.section(u'.', 0, 0); }

}  // namespace

QString CategoryTitle(const ActionInfo& info) {
    QString title = CategoryOf(info);
    if (!title.isEmpty()) title[0] = title[0].toUpper();
    return title;
}

std::vector<ActionInfo> InMenuOrder(std::vector<ActionInfo> infos) {
    const auto rank = [](const ActionInfo& info) {
        const QString category = CategoryOf(info);
        return std::find_if(std::begin(categories),
                            std::end(categories),
                            [&](const char* name) { return category == QLatin1String(name); }) -
               std::begin(categories);
    };
    std::stable_sort(infos.begin(), infos.end(), [&](const ActionInfo& a, const ActionInfo& b) {
        return rank(a) < rank(b);
    });
    return infos;
}

}  // namespace trovik::studio
