#include <tinyxml.h>

#include <algorithm>
#include <set>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"
#include "conf/xml/DocumentUpdate.h"
#include "conf/xml/XmlFile.h"

namespace {

constexpr CFileManConf::FilterType kCheckedTypes[] = {CFileManConf::FT_CLASS, CFileManConf::FT_MODE,
                                                      CFileManConf::FT_TYPE, CFileManConf::FT_PORT};

// The document's section for a filter type. Null for modules, whose marks never change.
const char* sectionOf(CFileManConf::FilterType type) {
    switch (type) {
    case CFileManConf::FT_CLASS:
        return "class";
    case CFileManConf::FT_MODE:
        return "mode";
    case CFileManConf::FT_TYPE:
        return "category";
    case CFileManConf::FT_PORT:
        return "port";
    case CFileManConf::FT_MODULE:
        break;
    }
    return nullptr;
}

template<typename Record>
void setChecked(std::map<std::string, Record>& map, const std::string& key, bool state) {
    const auto found = map.find(key);
    if (found != map.end())
        found->second.checked = state;
}

void setTypeChecked(const std::string& name, bool state) {
    std::list<std::string> names;
    CFileManConf::getAllTypeNames(names);
    // The vocabulary must contain exactly this name. Then the first type whose name is equal without regard
    // to case changes. This is intentional.
    if (!CCommUtils::isContains(names, name))
        return;
    auto& types = confState().s_confTypeMap;
    const auto found = std::find_if(types.begin(), types.end(), [&](const auto& entry) {
        return CCommUtils::isEquals(entry.second.name, name);
    });
    if (found != types.end())
        found->second.checked = state;
}

void setMemory(CFileManConf::FilterType type, const std::string& name, bool state) {
    switch (type) {
    case CFileManConf::FT_CLASS:
        return setChecked(confState().s_confClassMap, name, state);
    case CFileManConf::FT_MODE:
        return setChecked(confState().s_confModeMap, name, state);
    case CFileManConf::FT_TYPE:
        return setTypeChecked(name, state);
    case CFileManConf::FT_PORT:
        return setChecked(confState().s_confPortMap, name, state);
    case CFileManConf::FT_MODULE:
        return;
    }
}

// Calls visit(entry) for each entry of each section of that name. The sections are in the first child element
// of the root, whatever its name. Unlike readConf, this goes by position. This is intentional.
template<typename Visitor>
void forEachEntry(TiXmlDocument& document, const char* section, Visitor&& visit) {
    TiXmlElement* const filter = document.RootElement()->FirstChildElement();
    if (filter == nullptr)
        return;
    xml::forEachChild(*filter, [&](TiXmlElement& child) {
        if (xml::isNamed(child, section))
            xml::forEachChild(child, visit);
    });
}

// Sets the mark in memory of every type that has one of these names, which are in lower case.
void setEveryTypeChecked(const std::set<std::string>& names, bool state) {
    for (auto& [key, type] : confState().s_confTypeMap) {
        if (names.count(CCommUtils::lowerCase(type.name)) != 0)
            type.checked = state;
    }
}

// Appends chosen(entry) for each checked entry whose current(entry) was found on disk.
template<typename Record, typename Current, typename Chosen>
void appendChecked(std::list<std::string>& out, const std::map<std::string, Record>& map,
                   const NameSet& found, Current&& current, Chosen&& chosen) {
    for (const auto& entry : map) {
        if (entry.second.checked && found.contains(current(entry)))
            out.push_back(chosen(entry));
    }
}

constexpr auto kKey = [](const auto& entry) -> const std::string& { return entry.first; };
constexpr auto kName = [](const auto& entry) -> const std::string& { return entry.second.name; };

} // namespace

std::string CFileManConf::checkState2Str(bool state) {
    return state ? "true" : "false";
}

bool CFileManConf::setFilterChecked(FilterType type, const std::string& name, bool state) {
    if (type < FT_CLASS || type > FT_PORT)
        return false;
    setMemory(type, name, state);
    DocumentUpdate edit(getConfFileName());
    if (edit.document() == nullptr)
        return false;
    if (const char* const section = sectionOf(type)) {
        forEachEntry(*edit.document(), section, [&](TiXmlElement& entry) {
            if (CCommUtils::isEquals(xml::attribute(entry, "name"), name))
                entry.SetAttribute("checked", checkState2Str(state));
        });
    }
    return edit.save();
}

bool CFileManConf::setAllFilterChecked(bool state) {
    DocumentUpdate edit(getConfFileName());
    if (edit.document() == nullptr)
        return false;
    std::set<std::string> typeNames;
    for (const FilterType type : kCheckedTypes) {
        forEachEntry(*edit.document(), sectionOf(type), [&](TiXmlElement& entry) {
            entry.SetAttribute("checked", checkState2Str(state));
            if (type == FT_TYPE)
                typeNames.insert(CCommUtils::lowerCase(xml::attribute(entry, "name")));
            else
                setMemory(type, xml::attribute(entry, "name"), state);
        });
    }
    setEveryTypeChecked(typeNames, state);
    return edit.save();
}

void CFileManConf::getCheckedClasses(std::list<std::string>& out) {
    for (const auto& [name, info] : confState().s_confClassMap) {
        if (info.checked)
            out.push_back(name);
    }
}

void CFileManConf::getCheckedModes(std::list<std::string>& out) {
    appendChecked(out, confState().s_confModeMap, confState().s_curModeList, kKey, kKey);
}

void CFileManConf::getCheckedTypeNames(std::list<std::string>& out) {
    appendChecked(out, confState().s_confTypeMap, confState().s_curTypeList, kName, kName);
}

void CFileManConf::getCheckedTypeKeys(std::list<std::string>& out) {
    appendChecked(out, confState().s_confTypeMap, confState().s_curTypeList, kName, kKey);
}

void CFileManConf::getCheckedPorts(std::list<std::string>& out) {
    appendChecked(out, confState().s_confPortMap, confState().s_curPortList, kKey, kKey);
}

void CFileManConf::getCheckedModules(std::list<std::string>& out) {
    appendChecked(out, confState().s_confModuleMap, confState().s_curModuleList, kKey, kKey);
}

bool CFileManConf::isTypeChecked(const std::string& typeName) {
    const auto& types = confState().s_confTypeMap;
    return std::any_of(types.begin(), types.end(), [&](const auto& entry) {
        return entry.second.checked && CCommUtils::isEquals(entry.second.name, typeName);
    });
}

bool CFileManConf::getAllChecked(FilterType type) {
    const auto& slots = confState().s_allChecked;
    switch (type) {
    case FT_MODULE:
        return slots[0];
    case FT_MODE:
        return slots[1];
    case FT_TYPE:
        return slots[3];
    case FT_PORT:
        return slots[2];
    default:
        return slots[4];
    }
}
