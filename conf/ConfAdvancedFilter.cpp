#include <tinyxml.h>

#include <memory>

#include "common/CCommUtils.h"
#include "common/NameSet.h"
#include "conf/AdvancedMatch.h"
#include "conf/CFileManConf.h"
#include "conf/xml/DocumentUpdate.h"
#include "conf/xml/XmlFile.h"

namespace {

using xml::attribute;

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
    NameSet known{names};
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

} // namespace

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
    DocumentUpdate edit(getConfFileName());
    if (edit.document() == nullptr)
        return 0;
    forEachAdvInfo(*edit.document(), [&](TiXmlElement& element) { writeAdvInfo(element, info); });
    return edit.save() ? 1 : 0;
}
