#include <cstdio>
#include <unordered_map>
#include <vector>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"

namespace {

void mergeInto(std::list<std::string>& list, const std::list<std::string>& items) {
    NameSet merged(list);
    for (const std::string& item : items) {
        if (merged.add(item))
            list.push_back(item);
    }
}

} // namespace

void CFileManConf::addCurrentMode(const std::string& name) {
    confState().s_modeName = name;
    confState().s_curModeList.add(name);
}

void CFileManConf::addCurrentType(const std::string& name) {
    ConfState& state = confState();
    state.s_curTypeList.add(name);
    state.s_modeTypeMap[state.s_modeName].add(name);
}

void CFileManConf::addCurrentPort(const std::string& name) {
    confState().s_curPortList.add(name);
}

void CFileManConf::addCurrentModule(const std::string& name) {
    confState().s_curModuleList.add(name);
}

void CFileManConf::getCurrentMode(std::list<std::string>& out) {
    out = confState().s_curModeList.names();
}

void CFileManConf::getCurrentTypeNames(std::list<std::string>& out) {
    out = confState().s_curTypeList.names();
}

void CFileManConf::getCurrentPort(std::list<std::string>& out) {
    out = confState().s_curPortList.names();
}

void CFileManConf::getCurrentModule(std::list<std::string>& out) {
    out = confState().s_curModuleList.names();
}

bool CFileManConf::isCurrentMode(const std::string& name) {
    const ConfState& state = confState();
    return state.s_curModeList.empty() ? state.s_confModeMap.count(name) != 0
                                       : state.s_curModeList.contains(name);
}

void CFileManConf::getTypeByModeName(std::list<std::string>& out, const std::string& mode) {
    const auto found = confState().s_modeTypeMap.find(mode);
    if (found == confState().s_modeTypeMap.end())
        out.clear();
    else
        out = found->second.names();
}

void CFileManConf::getCurrentTypeKeys(std::list<std::string>& out) {
    std::unordered_map<std::string, std::vector<const std::string*>> keysOf; // by the name in lower case
    for (const auto& [key, type] : confState().s_confTypeMap)
        keysOf[CCommUtils::lowerCase(type.name)].push_back(&key);
    NameSet known(out);
    for (const std::string& name : confState().s_curTypeList.names()) {
        const auto found = keysOf.find(CCommUtils::lowerCase(name));
        if (found == keysOf.end())
            continue;
        for (const std::string* const key : found->second) {
            if (known.add(*key))
                out.push_back(*key);
        }
    }
}

bool CFileManConf::addTypeToMode(const std::string& type, const std::string& mode) {
    const auto found = confState().s_modeTypeMap.find(mode);
    return found != confState().s_modeTypeMap.end() && found->second.add(type);
}

void CFileManConf::clearCurrentModes() {
    confState().s_curModeList.clear();
}

void CFileManConf::clearCurrentTypes() {
    confState().s_curTypeList.clear();
}

void CFileManConf::clearCurrentPorts() {
    confState().s_curPortList.clear();
}

void CFileManConf::clearCurrentModules() {
    confState().s_curModuleList.clear();
}

void CFileManConf::clearCurrentAll() {
    clearCurrentModes();
    clearCurrentTypes();
    clearCurrentPorts();
}

void CFileManConf::addScanModuleInfo(const std::string& module, ScanModuleToModeInfo& info) {
    auto& scanInfo = confState().s_scanInfo;
    if (CCommUtils::isEquals(module, "40GE")) {
        const auto stored = scanInfo.find("40GE");
        // Only the type lists are merged, and only in the caller's record: emplace below does not change a
        // stored record. This is intentional.
        if (stored != scanInfo.end()) {
            mergeInto(info.profTypes, stored->second.profTypes);
            mergeInto(info.rsltTypes, stored->second.rsltTypes);
        }
    }
    scanInfo.emplace(module, info);
}

const std::map<std::string, ScanModuleToModeInfo>& CFileManConf::getScanModuleInfo() {
    return confState().s_scanInfo;
}

void CFileManConf::dump(const std::string& title, const std::list<std::string>& items) {
    std::printf("%s\ndump start............................\ntotal:%zu\n", title.c_str(), items.size());
    std::size_t number = 0;
    for (const std::string& item : items)
        std::printf("index: %zu----%s\n", ++number, item.c_str());
    std::puts("dump end..............................");
    std::fflush(stdout);
}
