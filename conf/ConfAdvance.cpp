#include <tinyxml.h>

#include <memory>
#include <utility>

#include "common/CCommUtils.h"
#include "common/UniqueNames.h"
#include "conf/CFileManConf.h"
#include "conf/Companion.h"
#include "conf/XmlEdit.h"
#include "conf/XmlFile.h"

namespace {

using xml::attribute;

bool isBlank(const _AdvanceInfo& info) {
    const auto unchosen = [](const std::string& choice) { return choice.empty() || isNone(choice); };
    return info.jobId.empty() && info.account.empty() && unchosen(info.locator) && unchosen(info.type) &&
           info.prefix.empty() && info.fileName.empty() && info.suffix.empty();
}

void readStored(_AdvanceInfo& info, const TiXmlElement& element) {
    info.jobId = attribute(element, "job_id");
    info.account = attribute(element, "account_id");
    info.locator = attribute(element, "locator");
    info.type = attribute(element, "advtype");
    info.prefix = attribute(element, "prefix");
    info.suffix = attribute(element, "suffix");
    info.hasAdvance = !isBlank(info);
}

// Calls visit(element) for each advinfo element in the first child element of the root, whatever its name.
// Unlike readConf, this goes by position. This is intentional.
template<typename Visitor>
void forEachAdvInfo(TiXmlDocument& document, Visitor&& visit) {
    TiXmlElement* const filter = document.RootElement()->FirstChildElement();
    if (filter == nullptr)
        return;
    xml::forEachChild(*filter, [&](TiXmlElement& child) {
        if (xml::isNamed(child, "advinfo"))
            visit(child);
    });
}

// The names that a chooser offers, without duplicates, and the chosen one.
struct Choices {
    std::list<std::string>& names;
    std::string& chosen;
    UniqueNames known{names};
};

// The last entry with a mark is the chosen one.
void readChoices(const TiXmlElement& chooser, Choices& choices) {
    xml::forEachChild(chooser, [&](const TiXmlElement& entry) {
        const std::string name = attribute(entry, "name");
        if (name.empty())
            return;
        if (choices.known.add(name))
            choices.names.push_back(name);
        if (CFileManConf::isChecked(attribute(entry, "checked")))
            choices.chosen = name;
    });
}

void readAdvInfo(const TiXmlElement& element, _AdvanceInfo& info, Choices& locators, Choices& types) {
    info.jobId = attribute(element, "jobid");
    info.account = attribute(element, "account");
    info.fileName = attribute(element, "name");
    info.prefix = attribute(element, "prefix");
    info.suffix = attribute(element, "suffix");
    xml::forEachChild(element, [&](const TiXmlElement& chooser) {
        if (xml::isNamed(chooser, "locator"))
            readChoices(chooser, locators);
        else if (xml::isNamed(chooser, "type"))
            readChoices(chooser, types);
    });
}

void markChoice(TiXmlElement& chooser, const std::string& chosen) {
    xml::forEachChild(chooser, [&](TiXmlElement& entry) {
        const bool isChosen = CCommUtils::isEquals(attribute(entry, "name"), chosen);
        entry.SetAttribute("checked", CFileManConf::checkState2Str(isChosen));
    });
}

void writeAdvInfo(TiXmlElement& element, const _AdvanceInfo& info) {
    element.SetAttribute("jobid", info.jobId);
    element.SetAttribute("account", info.account);
    element.SetAttribute("name", info.fileName);
    element.SetAttribute("prefix", info.prefix);
    element.SetAttribute("suffix", info.suffix);
    xml::forEachChild(element, [&](TiXmlElement& chooser) {
        if (xml::isNamed(chooser, "locator"))
            markChoice(chooser, info.locator);
        else if (xml::isNamed(chooser, "type"))
            markChoice(chooser, info.type);
    });
}

// An empty filter text restricts nothing.
bool contains(const std::string& text, const std::string& part) {
    return part.empty() || CCommUtils::isContains(text, part);
}

// Only the choice "None" restricts: the file's field must contain this word. With any other choice every file
// passes. This is the opposite of what one expects, and intentional.
bool passesChooser(const std::string& choice, const std::string& field) {
    return !isNone(choice) || CCommUtils::isContains(field, choice);
}

} // namespace

bool isNone(const std::string& choice) {
    return CCommUtils::isEquals(choice, "None");
}

_AdvanceInfo CFileManConf::getAdvInfo(_AdvanceInfo info, const std::string& path) {
    CompanionBudget budget;
    return getAdvInfo(std::move(info), path, budget);
}

_AdvanceInfo CFileManConf::getAdvInfo(_AdvanceInfo info, const std::string& path,
                                      CompanionBudget& budget) try {
    info.hasAdvance = false;
    const std::unique_ptr<TiXmlDocument> document = loadCompanion(path, budget);
    if (!document)
        return info;
    xml::forEachChild(*document->RootElement(), [&](const TiXmlElement& child) {
        if (xml::isNamed(child, kStoredInfoElement))
            readStored(info, child);
    });
    return info;
} catch (const std::string&) {
    return info;
}

bool CFileManConf::advMatch(const _AdvanceInfo& filter, const _AdvanceInfo& file) {
    return contains(file.jobId, filter.jobId) && contains(file.account, filter.account) &&
           contains(file.fileName, filter.fileName) &&
           CCommUtils::isStartsWith(file.fileName, filter.prefix) &&
           CCommUtils::isEndsWith(file.fileName, filter.suffix) &&
           passesChooser(filter.locator, file.locator) && passesChooser(filter.type, file.type);
}

void CFileManConf::getAdvanceInfo(_AdvanceInfo& info) {
    info.hasAdvance = false;
    const std::unique_ptr<TiXmlDocument> document = xml::load(getConfFileName());
    if (!document)
        return;
    Choices locators{info.locatorList, info.locator};
    Choices types{info.typeList, info.type};
    forEachAdvInfo(*document,
                   [&](const TiXmlElement& element) { readAdvInfo(element, info, locators, types); });
    info.hasAdvance = !isBlank(info);
}

int CFileManConf::saveAdvanceInfo(const _AdvanceInfo& info) {
    XmlEdit edit(getConfFileName());
    if (edit.document() == nullptr)
        return 0;
    forEachAdvInfo(*edit.document(), [&](TiXmlElement& element) { writeAdvInfo(element, info); });
    return edit.save() ? 1 : 0;
}
