#pragma once

#include <array>
#include <list>
#include <map>
#include <string>

#include "common/NameSet.h"
#include "conf/ConfRecords.h"
#include "conf/ExtraDirIndex.h"
#include "conf/FieldIndex.h"
#include "conf/ScanRecords.h"

// Indices for the lookups, which are called once for each directory or record.
struct ConfIndices {
    FieldIndex<_ModeInfo> modeByName{&_ModeInfo::name};
    FieldIndex<_ModeInfo> modeByLabel{&_ModeInfo::label};
    FieldIndex<_ModeInfo> modeByResultDir{&_ModeInfo::rslt_dir_name};
    FieldIndex<_ModeInfo> modeByProfileDir{&_ModeInfo::prof_dir_name};
    FieldIndex<_TypeInfo> typeByKey{&_TypeInfo::key};
    FieldIndex<_TypeInfo> typeByLabel{&_TypeInfo::label};
    FieldIndex<_PortInfo> portByKey{&_PortInfo::key};
    FieldIndex<_PortInfo> portByName{&_PortInfo::name};
    FieldIndex<_PortInfo> portByLabel{&_PortInfo::label};
    ExtraDirIndex extraDirs;
};

// The state behind CFileManConf. Only the sources of this folder include this header; all others call the
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

    // Filled by the scans of the storage tree: without duplicates, in the order in which they were found.
    NameSet s_curModeList;
    NameSet s_curTypeList;
    NameSet s_curPortList;
    NameSet s_curModuleList;
    std::map<std::string, NameSet> s_modeTypeMap; // mode name to type names
    std::string s_modeName;                       // the mode that was added last
    std::map<std::string, ScanModuleToModeInfo> s_scanInfo;

    std::array<bool, 5> s_allChecked{};

    ConfIndices indices;
};

ConfState& confState();

// Restores the state of a new process. For tests.
void resetConfState();
