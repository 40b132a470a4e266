#include <algorithm>
#include <cstddef>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"

namespace {

template<typename Record>
std::string fieldOf(const Record* record, std::string Record::*field) {
    return record == nullptr ? std::string() : record->*field;
}

// A negative count removes nothing.
std::string cutLast(const std::string& name, int n) {
    return CCommUtils::cutLast(name, n < 0 ? 0 : static_cast<std::size_t>(n));
}

constexpr char kUnknown[] = "Unknown";

} // namespace

std::string CFileManConf::getModeName(const std::string& dirName) {
    ConfState& state = confState();
    const auto& modes = state.s_confModeMap;
    // A directory "ktr" belongs to the first mode, whatever directories that mode declares. This is
    // intentional.
    if (dirName == "ktr")
        return modes.empty() ? std::string() : modes.begin()->first;
    const _ModeInfo* const byResult = state.indices.modeByResultDir.find(modes, dirName);
    const _ModeInfo* const byProfile = state.indices.modeByProfileDir.find(modes, dirName);
    // If two modes match, the first in key order counts. The key of a mode is its name.
    if (byResult != nullptr && byProfile != nullptr)
        return std::min(byResult->name, byProfile->name);
    return fieldOf(byResult == nullptr ? byProfile : byResult, &_ModeInfo::name);
}

std::string CFileManConf::getTypeName(const std::string& typeKey) {
    return fieldOf(confState().indices.typeByKey.find(getTypesInfo(), typeKey), &_TypeInfo::name);
}

std::string CFileManConf::getPortName(const std::string& portKey) {
    return fieldOf(confState().indices.portByKey.find(getPortsInfo(), portKey), &_PortInfo::name);
}

std::string CFileManConf::modeName2Label(const std::string& name) {
    return fieldOf(confState().indices.modeByName.find(getModesInfo(), name), &_ModeInfo::label);
}

std::string CFileManConf::typeKey2Label(const std::string& key) {
    return fieldOf(confState().indices.typeByKey.find(getTypesInfo(), key), &_TypeInfo::label);
}

std::string CFileManConf::portName2Label(const std::string& name) {
    return fieldOf(confState().indices.portByName.find(getPortsInfo(), name), &_PortInfo::label);
}

std::string CFileManConf::modeLabel2DirName(const std::string& label, bool isResult) {
    return fieldOf(confState().indices.modeByLabel.find(getModesInfo(), label),
                   isResult ? &_ModeInfo::rslt_dir_name : &_ModeInfo::prof_dir_name);
}

std::string CFileManConf::typeLabel2DirName(const std::string& label, bool isResult) {
    const _TypeInfo* const type = confState().indices.typeByLabel.find(getTypesInfo(), label);
    return type == nullptr ? std::string() : type->key + (isResult ? type->rslt_suffix : type->prof_suffix);
}

std::string CFileManConf::portLabel2DirName(const std::string& label, bool /*isResult*/) {
    // This exchange is intentional: the port of the second module has the plain directory name.
    if (CCommUtils::isEquals(label, "10GE M2"))
        return "10gport";
    if (CCommUtils::isEquals(label, "10GE M1"))
        return "10gport2";
    return fieldOf(confState().indices.portByLabel.find(getPortsInfo(), label), &_PortInfo::dir);
}

std::string CFileManConf::modeLabel2ModeName(const std::string& label) {
    return fieldOf(confState().indices.modeByLabel.find(getModesInfo(), label), &_ModeInfo::name);
}

std::string CFileManConf::typeLabel2Key(const std::string& label) {
    return fieldOf(confState().indices.typeByLabel.find(getTypesInfo(), label), &_TypeInfo::key);
}

std::string CFileManConf::str2Port(const std::string& name) {
    constexpr int kPortWordLength = 4;
    if (name.empty())
        return kUnknown;
    // This tests for any of the four letters, not for the word. This is intentional.
    const bool cuts = name.find_first_of("port") != std::string::npos;
    return getPortName(cuts ? cutLast(name, kPortWordLength) : name);
}

std::string CFileManConf::str2Port(const std::string& name, int n) {
    return name.empty() ? kUnknown : getPortName(cutLast(name, n));
}

std::string CFileManConf::str2Type(const std::string& name, int n) {
    return name.empty() ? kUnknown : cutLast(name, n);
}
