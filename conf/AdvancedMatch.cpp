#include "conf/AdvancedMatch.h"

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"

namespace {

// An empty filter text restricts nothing.
bool contains(const std::string& text, const std::string& part) {
    return part.empty() || CCommUtils::isContains(text, part);
}

// Only the choice "None" restricts: the file's field must contain this word. With any other choice every file
// passes. This is the opposite of what one expects, and intentional.
bool passesChooser(const std::string& choice, const std::string& field) {
    return !isNone(choice) || CCommUtils::isContains(field, choice);
}

bool isUnchosen(const std::string& choice) {
    return choice.empty() || isNone(choice);
}

} // namespace

bool isNone(const std::string& choice) {
    return CCommUtils::isEquals(choice, "None");
}

bool isBlank(const _AdvanceInfo& info) {
    return info.jobId.empty() && info.account.empty() && isUnchosen(info.locator) && isUnchosen(info.type) &&
           info.prefix.empty() && info.fileName.empty() && info.suffix.empty();
}

bool CFileManConf::advMatch(const _AdvanceInfo& filter, const _AdvanceInfo& file) {
    return contains(file.jobId, filter.jobId) && contains(file.account, filter.account) &&
           contains(file.fileName, filter.fileName) &&
           CCommUtils::isStartsWith(file.fileName, filter.prefix) &&
           CCommUtils::isEndsWith(file.fileName, filter.suffix) &&
           passesChooser(filter.locator, file.locator) && passesChooser(filter.type, file.type);
}
