// Tests the advanced information of a file, a filter that needs it, and the state of the filter in the
// configuration document. Input: six lines for the filter (job id, account, file name, prefix, suffix,
// locator), then the document.

#include <filesystem>
#include <string>

#include "FuzzInput.h"
#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"

namespace {

using Conf = CFileManConf;
using Field = std::string _AdvanceInfo::*;

constexpr char kPath[] = "/tmp/companion.xml";
constexpr Field kFields[] = {&_AdvanceInfo::jobId,  &_AdvanceInfo::account, &_AdvanceInfo::fileName,
                             &_AdvanceInfo::prefix, &_AdvanceInfo::suffix,  &_AdvanceInfo::locator};

bool isBlank(const _AdvanceInfo& info) {
    const auto unchosen = [](const std::string& choice) {
        return choice.empty() || CCommUtils::isEquals(choice, "none");
    };
    return (info.jobId + info.account + info.prefix + info.fileName + info.suffix).empty() &&
           unchosen(info.locator) && unchosen(info.type);
}

void checkMatch(const _AdvanceInfo& filter, const std::string& document) {
    writeFuzzFile(kPath, document);
    _AdvanceInfo file = Conf::getAdvInfo({}, kPath);
    require(file.hasAdvance == !isBlank(file), "a file without restriction says so");
    file.fileName = filter.prefix + filter.fileName + filter.suffix;
    require(Conf::advMatch({}, file), "a blank filter keeps every file");
    const bool matches = Conf::advMatch(filter, file);
    for (const Field field : kFields) {
        _AdvanceInfo one, others = filter;
        one.*field = filter.*field;
        (others.*field).clear();
        require(matches == (Conf::advMatch(one, file) && Conf::advMatch(others, file)),
                "each criterion counts by itself");
    }
    _AdvanceInfo own = file;
    own.locator.clear();
    own.type.clear();
    own.prefix.clear();
    own.suffix.clear();
    require(Conf::advMatch(own, file), "a file matches what it says itself");
}

bool holds(const std::list<std::string>& choices, const std::string& name) {
    for (const std::string& choice : choices) {
        if (CCommUtils::isEquals(choice, name))
            return true;
    }
    return false;
}

void checkStored(const _AdvanceInfo& filter, const std::string& document) {
    const std::string path = Conf::getConfFileName();
    std::filesystem::create_directories(Conf::getConfPath());
    writeFuzzFile(path, document);
    if (Conf::saveAdvanceInfo(filter) == 0) {
        require(readFuzzFile(path) == document, "what is not saved leaves the document alone");
        return;
    }
    const std::string saved = readFuzzFile(path);
    const std::string unread = filter.jobId + "?";
    _AdvanceInfo stored;
    stored.jobId = unread;
    Conf::getAdvanceInfo(stored);
    // A document without the element has no place for any of it.
    if (stored.jobId == unread) {
        require(saved == document, "nothing is added to a document without the element");
        return;
    }
    for (const Field field : kFields) {
        if (field != &_AdvanceInfo::locator)
            require(stored.*field == filter.*field, "what was saved is read");
    }
    if (!filter.locator.empty() && holds(stored.locatorList, filter.locator))
        require(CCommUtils::isEquals(stored.locator, filter.locator), "the chosen locator is marked");
    require(stored.hasAdvance == !isBlank(stored), "a state without restriction says so");
    require(Conf::saveAdvanceInfo(filter) == 1 && readFuzzFile(path) == saved,
            "saving again changes nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    _AdvanceInfo filter;
    for (const Field field : kFields) {
        // A request cannot contain a zero byte.
        const std::string line = input.line();
        filter.*field = line.substr(0, line.find('\0'));
    }
    checkMatch(filter, input.rest());
    checkStored(filter, input.rest());
    return 0;
}
