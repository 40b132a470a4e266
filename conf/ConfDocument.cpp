#include <tinyxml.h>

#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"
#include "conf/xml/XmlFile.h"

TiXmlDocument* g_pXmlDoc = nullptr;

namespace {

using xml::attribute;

bool flag(const TiXmlElement& entry, const char* name) {
    return CFileManConf::isChecked(attribute(entry, name));
}

bool valueEquals(const TiXmlElement& entry, const char* name, const char* value) {
    return CCommUtils::isEquals(attribute(entry, name), value);
}

void appendList(std::list<std::string>& out, const TiXmlElement& entry) {
    CCommUtils::split(out, ",", attribute(entry, "list"));
}

void readClass(const TiXmlElement& entry) {
    const std::string name = attribute(entry, "name");
    confState().s_confClassMap.emplace(name, _ClassInfo{name, flag(entry, "checked")});
}

void readCommonOption(const TiXmlElement& entry) {
    CommonOptInfo option{attribute(entry, "test_name"),
                         attribute(entry, "key"),
                         attribute(entry, "dir_name"),
                         flag(entry, "under_port_dir"),
                         {}};
    appendList(option.list, entry);
    confState().s_confCommonModuleMap.emplace(option.test_name, std::move(option));
}

// A second half of the same kind replaces directory and flag, and adds to the list.
void readHalf(ModeOptInfo& option, const TiXmlElement& half) {
    if (valueEquals(half, "test_name", "Profile")) {
        option.prof_dir_name = attribute(half, "dir_name");
        option.prof_under_port_dir = flag(half, "under_port_dir");
        appendList(option.prof_list, half);
    } else if (valueEquals(half, "test_name", "Result")) {
        option.rslt_dir_name = attribute(half, "dir_name");
        option.rslt_under_port_dir = flag(half, "under_port_dir");
        appendList(option.rslt_list, half);
    }
}

ModeOptInfo readModeOption(const TiXmlElement& entry) {
    ModeOptInfo option;
    option.mode_name = attribute(entry, "mode_name");
    xml::forEachChild(entry, [&](const TiXmlElement& half) { readHalf(option, half); });
    return option;
}

void readModule(const TiXmlElement& entry) {
    ModuleInfo module{attribute(entry, "name"), flag(entry, "checked"), {}};
    if (CCommUtils::isEquals(module.name, "Common")) {
        xml::forEachChild(entry, readCommonOption);
    } else {
        xml::forEachChild(entry, [&](const TiXmlElement& child) {
            ModeOptInfo option = readModeOption(child);
            module.modeOpts.emplace(option.mode_name, std::move(option));
        });
    }
    confState().s_confModuleMap.emplace(module.name, std::move(module));
}

void readMode(const TiXmlElement& entry) {
    _ModeInfo mode{attribute(entry, "label"), attribute(entry, "name"), attribute(entry, "rslt_dir_name"),
                   attribute(entry, "prof_dir_name"), flag(entry, "checked")};
    confState().s_confModeMap.emplace(mode.name, std::move(mode));
}

void readCategory(const TiXmlElement& entry) {
    _TypeInfo type{attribute(entry, "label"),       attribute(entry, "name"),        attribute(entry, "key"),
                   attribute(entry, "rslt_suffix"), attribute(entry, "prof_suffix"), flag(entry, "checked")};
    confState().s_confTypeMap.emplace(type.key, std::move(type));
}

void readPort(const TiXmlElement& entry) {
    _PortInfo port{attribute(entry, "label"),       attribute(entry, "name"),
                   attribute(entry, "key"),         attribute(entry, "dir"),
                   attribute(entry, "rslt_suffix"), attribute(entry, "prof_suffix"),
                   flag(entry, "checked")};
    confState().s_confPortMap.emplace(port.name, std::move(port));
}

void readExtraDir(const TiXmlElement& entry) {
    confState().s_extraDirInfoList.push_back(
        {attribute(entry, "module"), attribute(entry, "mode"), attribute(entry, "port"),
         attribute(entry, "key"), valueEquals(entry, "test_name", "Result"), attribute(entry, "dir_name")});
}

// The sections of the filter element. The attributes of a section itself are not read.
struct SectionReader {
    const char* section; // the exact name, with its letter case
    void (*readEntry)(const TiXmlElement&);
};
constexpr SectionReader kSectionReaders[] = {
    {"class", readClass},       {"module", readModule}, {"mode", readMode},
    {"category", readCategory}, {"port", readPort},     {"extraDir", readExtraDir},
};

void readSection(const TiXmlElement& section) {
    for (const SectionReader& reader : kSectionReaders) {
        if (section.ValueStr() == reader.section)
            xml::forEachChild(section, reader.readEntry);
    }
}

const TiXmlElement* findFilter(const TiXmlElement& root) {
    const TiXmlElement* child = root.FirstChildElement();
    while (child != nullptr && !xml::isNamed(*child, "filter"))
        child = child->NextSiblingElement();
    return child;
}

} // namespace

std::string CFileManConf::getConfPath() {
    return paths::kConfDir;
}

std::string CFileManConf::getConfFileName() {
    return paths::kConfFile;
}

bool CFileManConf::readConf(const std::string& path) try {
    const std::unique_ptr<TiXmlDocument> document = xml::load(path);
    if (!document)
        return false;
    const TiXmlElement* const filter = findFilter(*document->RootElement());
    if (filter == nullptr) {
        xml::reportFailure(path, {0, "its root has no filter element"});
        return false;
    }
    xml::forEachChild(*filter, readSection);
    return true;
} catch (const std::string& why) {
    // This line is part of the response. It is intentional: the page then says that the configuration is not
    // complete.
    std::printf("Catch load xml exception:%s\n", why.c_str());
    return false;
} catch (const std::bad_alloc&) {
    xml::reportFailure(path, {ENOMEM, {}});
    return false;
}

// The document is kept even if it does not parse; a later call then returns true. This is intentional.
bool CFileManConf::loadConf(const std::string& path) {
    if (g_pXmlDoc != nullptr)
        return true;
    g_pXmlDoc = std::make_unique<TiXmlDocument>(path.c_str()).release();
    return xml::parseFile(*g_pXmlDoc, path, xml::Root::Optional);
}

void CFileManConf::releaseConf() {
    const std::unique_ptr<TiXmlDocument> owner(g_pXmlDoc);
    g_pXmlDoc = nullptr;
}

bool CFileManConf::isChecked(const std::string& value) {
    return value == "true";
}
