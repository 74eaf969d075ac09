// SPDX-License-Identifier: Apache-2.0
#include "BatchReport.h"

#include <cstring>
#include <sstream>

namespace trovik {

namespace {

const char* StatusName(InputStatus status) {
    switch (status) {
        case InputStatus::Done:
            return "done";
        case InputStatus::Skipped:
            return "skipped";
        case InputStatus::Failed:
            return "failed";
        case InputStatus::Waiting:
            break;
    }
    return "waiting";
}

}  // namespace

void ReadMessages(const ChildResult& result, InputReport& report) {
    const std::string warning = "warning: ";
    const std::string error = "trovik: ";
    std::istringstream lines(result.error);
    for (std::string text; std::getline(lines, text);) {
        if (text.rfind(warning, 0) == 0)
            report.warnings.push_back(text.substr(warning.size()));
        else if (text.rfind(error, 0) == 0)
            report.error = text.substr(error.size());
    }
    if (result.endingSignal != 0)
        report.error =
            std::string("the process was ended by the signal ") + strsignal(result.endingSignal);
    else if (result.status != 0 && report.error.empty())
        report.error = "the process failed with status " + std::to_string(result.status);
}

nlohmann::json ReportJson(const BatchInput& input, const InputReport& report) {
    return {{"input", input.path},
            {"status", StatusName(report.status)},
            {"files", report.files},
            {"warnings", report.warnings},
            {"error", report.error},
            {"seconds", report.seconds}};
}

}  // namespace trovik
