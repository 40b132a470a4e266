#include <stdexcept>

#include "common/CCommUtils.h"
#include "common/Report.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"

namespace {

// Like std::map::at, but it also writes the key to the log, because nothing catches the exception.
template<typename Record>
const Record& checked(const std::map<std::string, Record>& map, const std::string& key, const char* kind) {
    const auto found = map.find(key);
    if (found == map.end()) {
        report("cannot look up " + std::string(kind), key, "the configuration has no such entry");
        throw std::out_of_range("no " + std::string(kind) + " " + key);
    }
    return found->second;
}

// Appends the keys of the map, except those that out already has.
template<typename Record>
void appendKeys(std::list<std::string>& out, const std::map<std::string, Record>& map) {
    const NameSet before(out);
    for (const auto& [key, record] : map) {
        if (!before.contains(key))
            out.push_back(key);
    }
}

} // namespace

const _ModeInfo& CFileManConf::getModeInfo(const std::string& name) {
    return checked(confState().s_confModeMap, name, "mode");
}

const _TypeInfo& CFileManConf::getTypeInfo(const std::string& key) {
    return checked(confState().s_confTypeMap, key, "type");
}

const _PortInfo& CFileManConf::getPortInfo(const std::string& name) {
    return checked(confState().s_confPortMap, name, "port");
}

const _ClassInfo& CFileManConf::getClassInfo(const std::string& name) {
    return checked(confState().s_confClassMap, name, "class");
}

const ModuleInfo& CFileManConf::getModuleInfo(const std::string& name) {
    return checked(confState().s_confModuleMap, name, "module");
}

bool CFileManConf::hasModule(const std::string& name) {
    return confState().s_confModuleMap.count(name) != 0;
}

const std::map<std::string, _ModeInfo>& CFileManConf::getModesInfo() {
    return confState().s_confModeMap;
}

const std::map<std::string, _TypeInfo>& CFileManConf::getTypesInfo() {
    return confState().s_confTypeMap;
}

const std::map<std::string, _PortInfo>& CFileManConf::getPortsInfo() {
    return confState().s_confPortMap;
}

const std::map<std::string, _ClassInfo>& CFileManConf::getClassesInfo() {
    return confState().s_confClassMap;
}

const std::map<std::string, ModuleInfo>& CFileManConf::getModulesInfo() {
    return confState().s_confModuleMap;
}

const std::map<std::string, CommonOptInfo>& CFileManConf::getCommonModuleInfo() {
    return confState().s_confCommonModuleMap;
}

void CFileManConf::getTypeKeys(std::list<std::string>& out, const std::string& typeName) {
    NameSet known(out);
    for (const auto& [key, type] : confState().s_confTypeMap) {
        if (CCommUtils::isEquals(type.name, typeName) && known.add(key))
            out.push_back(key);
    }
}

void CFileManConf::getAllModeNames(std::list<std::string>& out) {
    appendKeys(out, confState().s_confModeMap);
}

void CFileManConf::getAllTypeNames(std::list<std::string>& out) {
    NameSet known(out);
    for (const auto& [key, type] : confState().s_confTypeMap) {
        if (known.add(type.name))
            out.push_back(type.name);
    }
}

void CFileManConf::getAllTypeKeys(std::list<std::string>& out) {
    appendKeys(out, confState().s_confTypeMap);
}

void CFileManConf::getAllPortNames(std::list<std::string>& out) {
    appendKeys(out, confState().s_confPortMap);
}

void CFileManConf::getAllModuleNames(std::list<std::string>& out) {
    appendKeys(out, confState().s_confModuleMap);
}

const std::list<ExtraDirInfo>& CFileManConf::getExtraDirList() {
    return confState().s_extraDirInfoList;
}

void CFileManConf::getExtraDirList(std::list<ExtraDirInfo>& out) {
    out = confState().s_extraDirInfoList;
}

const std::vector<const ExtraDirInfo*>& CFileManConf::getExtraDirs(const std::string& module,
                                                                   const std::string& mode) {
    ConfState& state = confState();
    return state.indices.extraDirs.find(state.s_extraDirInfoList, module, mode);
}

std::string CFileManConf::getVerNum(const std::string& /*text*/) {
    return {};
}
