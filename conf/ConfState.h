#pragma once

#include <array>
#include <functional>
#include <list>
#include <map>
#include <string>

#include "conf/ConfRecords.h"
#include "conf/ScanRecords.h"

// The state behind CFileManConf. Only sources of this folder include this header; everybody else asks the
// class.
struct ConfState {
    // Filled by CFileManConf::readConf.
    std::map<std::string, _ClassInfo> s_confClassMap;
    std::map<std::string, ModuleInfo> s_confModuleMap;
    std::map<std::string, CommonOptInfo> s_confCommonModuleMap; // by test_name
    std::map<std::string, _ModeInfo> s_confModeMap;
    std::map<std::string, _TypeInfo> s_confTypeMap; // by type key
    std::map<std::string, _PortInfo> s_confPortMap;
    std::list<ExtraDirInfo> s_extraDirInfoList; // document order, duplicates kept

    // Filled by the scans of the storage tree, in the order first found, without duplicates.
    std::list<std::string> s_curModeList;
    std::list<std::string> s_curTypeList;
    std::list<std::string> s_curPortList;
    std::list<std::string> s_curModuleList;
    std::map<std::string, std::list<std::string>> s_modeTypeMap; // mode name to type names
    std::string s_modeName;                                      // the mode added last
    std::map<std::string, ScanModuleToModeInfo> s_scanInfo;

    std::function<void()> putOffScan; // fills the lists above; empty once it has run

    std::array<bool, 5> s_allChecked{};
};

ConfState& confState();

// The same, for whoever looks at or changes what was found on disk: a scan that was put off runs first. Not
// for the module list, which no scan fills.
ConfState& foundState();

// For tests that need a fresh process's state.
void resetConfState();
