#pragma once

#include <list>
#include <map>
#include <string>

// The type keys that the scan found below each port name of one mode.
struct ScanModeToPortInfo {
    std::map<std::string, std::list<std::string>> profPorts;
    std::map<std::string, std::list<std::string>> rsltPorts;
};

// What one module has on disk: its type keys, without duplicates, in the order in which they were found, and
// the ports of each mode.
struct ScanModuleToModeInfo {
    std::list<std::string> profTypes;
    std::list<std::string> rsltTypes;
    std::map<std::string, ScanModeToPortInfo> modes;
};
