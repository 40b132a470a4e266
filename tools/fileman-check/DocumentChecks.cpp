#include "fileman-check/DocumentChecks.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "conf/xml/XmlFile.h"
#include "fileman-check/Findings.h"
#include "fileman-check/LinedDocument.h"
#include "fileman/names/PortNames.h"
#include "fileman/names/TestTypeDirs.h"

namespace {

using xml::attribute;

constexpr char kOnlySomeLists[] =
    "its files are missing in the list of all results and cannot be viewed, downloaded or printed";

// Adds a finding for each entry whose key occurs twice in its section.
class Duplicates {
public:
    Duplicates(Findings& findings, const char* keyName) : m_findings(findings), m_keyName(keyName) {}

    // Returns true for the first entry with this key, which the program keeps.
    bool isFirst(const TiXmlElement& entry) {
        const std::string key = attribute(entry, m_keyName);
        const auto [place, isNew] = m_lines.try_emplace(key, entry.Row());
        if (!isNew)
            m_findings.add(entry.Row(), "ignored: line " + std::to_string(place->second) + " has " +
                                            m_keyName + "=" + quoted(key) + " already");
        return isNew;
    }

private:
    Findings& m_findings;
    const char* m_keyName;
    std::map<std::string, int> m_lines;
};

class VocabularyCheck {
public:
    explicit VocabularyCheck(Findings& findings) : m_findings(findings) {}

    void checkSection(const TiXmlElement& section);

private:
    using Check = void (VocabularyCheck::*)(const TiXmlElement&);
    struct Section {
        const char* name;
        Check checkEntry;
        Duplicates duplicates;
    };

    void checkNothing(const TiXmlElement&) {}
    void checkModule(const TiXmlElement& module);
    void checkMode(const TiXmlElement& mode);
    void checkCategory(const TiXmlElement& category);
    void checkPort(const TiXmlElement& port);
    void checkFlag(const TiXmlElement& entry, const char* name);

    Findings& m_findings;
    Duplicates m_common{m_findings, "test_name"};
    // Sections of the same name share their keys.
    Section m_sections[5] = {
        {"class", &VocabularyCheck::checkNothing, {m_findings, "name"}},
        {"module", &VocabularyCheck::checkModule, {m_findings, "name"}},
        {"mode", &VocabularyCheck::checkMode, {m_findings, "name"}},
        {"category", &VocabularyCheck::checkCategory, {m_findings, "key"}},
        {"port", &VocabularyCheck::checkPort, {m_findings, "name"}},
    };
};

void VocabularyCheck::checkFlag(const TiXmlElement& entry, const char* name) {
    const std::string value = attribute(entry, name);
    if (!CFileManConf::isChecked(value) && value != "false")
        m_findings.add(entry.Row(), std::string(name) + "=" + quoted(value) + " counts as \"false\"");
}

void VocabularyCheck::checkModule(const TiXmlElement& module) {
    const bool isCommon = CCommUtils::isEquals(attribute(module, "name"), "Common");
    Duplicates modes(m_findings, "mode_name");
    xml::forEachChild(module, [&](const TiXmlElement& entry) {
        if (isCommon) {
            if (m_common.isFirst(entry))
                checkFlag(entry, "under_port_dir");
            return;
        }
        const std::string mode = attribute(entry, "mode_name");
        if (!modes.isFirst(entry))
            return;
        if (CFileManConf::getModesInfo().count(mode) == 0)
            m_findings.add(entry.Row(),
                           "the section mode has no entry with name=" + quoted(mode) + ": " + kOnlySomeLists);
        xml::forEachChild(entry, [&](const TiXmlElement& half) { checkFlag(half, "under_port_dir"); });
    });
}

void VocabularyCheck::checkMode(const TiXmlElement& mode) {
    const std::string name = attribute(mode, "name");
    for (const char* const attributeName : {"rslt_dir_name", "prof_dir_name"}) {
        const std::string dir = attribute(mode, attributeName);
        if (!dir.empty() && CFileManConf::getModeName(dir) != name)
            m_findings.add(mode.Row(), std::string(attributeName) + "=" + quoted(dir) +
                                           " leads to the mode " + quoted(CFileManConf::getModeName(dir)) +
                                           ", not to this one");
    }
}

// The filter page offers names, but lists compare keys. So each name must be the key of this category or of
// another one.
void VocabularyCheck::checkCategory(const TiXmlElement& category) {
    const std::string name = attribute(category, "name");
    const std::string key = attribute(category, "key");
    if (CFileManConf::getTypesInfo().count(name) == 0)
        m_findings.add(category.Row(), "the filter page offers the name " + quoted(name) +
                                           ", but lists compare the key " + quoted(key) +
                                           ": a choice of it there finds nothing; give name and key the "
                                           "same text, and put the text for users into label");
    if (CFileManConf::getTypeName(key) != name)
        m_findings.add(category.Row(), "the key " + quoted(key) + " leads to the category " +
                                           quoted(CFileManConf::getTypeName(key)) + ", not to this one");
}

void VocabularyCheck::checkPort(const TiXmlElement& port) {
    const std::string name = attribute(port, "name");
    const std::string key = attribute(port, "key");
    const std::string found = CFileManConf::getPortName(key);
    if (found != name)
        m_findings.add(port.Row(), "the key " + quoted(key) + " leads to the port " + quoted(found) +
                                       ", not to this one");
    const std::string dir = attribute(port, "dir");
    if (ports::isPortDir(dir) && ports::fromDirName(dir) != name)
        m_findings.add(port.Row(), "the directory " + quoted(dir) + " stands for the port " +
                                       quoted(ports::fromDirName(dir)) + ", not for this one");
}

void VocabularyCheck::checkSection(const TiXmlElement& section) {
    for (Section& rule : m_sections) {
        if (section.ValueStr() != rule.name)
            continue;
        xml::forEachChild(section, [&](const TiXmlElement& entry) {
            if (std::string_view(rule.name) != "category" && attribute(entry, "name").empty())
                m_findings.add(entry.Row(), "an entry without a name");
            if (!rule.duplicates.isFirst(entry))
                return;
            checkFlag(entry, "checked");
            (this->*rule.checkEntry)(entry);
        });
        return;
    }
    if (section.ValueStr() != "extraDir" && !xml::isNamed(section, "advinfo"))
        m_findings.add(section.Row(), "the section " + quoted(section.ValueStr()) +
                                          " is ignored: the program knows no such section");
}

void checkPortNames(const Source& source, const ActiveFilter& all, Findings& findings) {
    if (source.names.empty())
        findings.add(source.line, source.title + ": the list is empty, so no port directory is listed");
    for (const std::string& name : source.names) {
        if (!ports::isPortDir(name)) {
            findings.add(source.line,
                         source.title + ": " + quoted(name) +
                             " is not the name of a port directory: the name must end in port or port2");
            continue;
        }
        const std::string port = ports::fromDirName(name);
        if (port.empty())
            findings.add(source.line, source.title + ": no port entry has the directory " + quoted(name) +
                                          ": " + kOnlySomeLists);
        else if (!all.passesPort(port))
            findings.add(source.line, source.title + ": the directory " + quoted(name) +
                                          " stands for the port " + quoted(port) +
                                          ", which no entry declares: " + kOnlySomeLists);
    }
}

void checkType(const Source& source, const std::string& type, const ActiveFilter& all, Findings& findings) {
    if (!all.passesTest(type))
        findings.add(source.line,
                     source.title + ": no category has the key " + quoted(type) + ": " + kOnlySomeLists);
}

void checkSlashes(const Source& source, Findings& findings) {
    if (CCommUtils::isContains(source.dir, "//") || CCommUtils::isEndsWith(source.dir, "/"))
        findings.add(source.line,
                     source.title + ": the directory " + quoted(source.dir) +
                         " has one slash too many, and the paths of its files have it too: dir_name starts "
                         "below /home and has no slash at either end");
}

void checkExtra(const Source& source, const ActiveFilter& all, Findings& findings) {
    if (source.port.empty() && !all.fields().ports.empty())
        findings.add(source.line,
                     source.title +
                         ": without a port it is left out by every choice of ports: " + kOnlySomeLists);
    else if (!source.port.empty() && !all.passesPort(source.port))
        findings.add(source.line, source.title + ": no entry declares the port " + quoted(source.port) +
                                      ", so no filter page offers it");
}

} // namespace

void checkVocabulary(const LinedDocument& document, Findings& findings) {
    const TiXmlElement& filter = *document.filter();
    if (document.firstChild() != &filter)
        findings.add(filter.Row(),
                     "filter is not the first child of the root: the program looks there for check marks and "
                     "the advanced filter, and does not find them");
    VocabularyCheck check(findings);
    xml::forEachChild(filter, [&](const TiXmlElement& section) { check.checkSection(section); });
}

void checkSources(const std::vector<Source>& sources, Findings& findings) {
    const ActiveFilter all = everything();
    for (const Source& source : sources) {
        if (source.line == 0)
            continue;
        checkSlashes(source, findings);
        if (source.isExtra)
            checkExtra(source, all, findings);
        switch (source.shape) {
        case Source::Shape::Tree:
            checkPortNames(source, all, findings);
            break;
        case Source::Shape::Fixed:
            for (const std::string& name : source.names)
                checkType(source, types::fromConfiguredDir(name), all, findings);
            break;
        case Source::Shape::Flat:
            checkType(source, source.type, all, findings);
            break;
        case Source::Shape::Nothing:
            break;
        }
    }
}
