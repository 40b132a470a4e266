#pragma once

#include <string>
#include <string_view>

// Type directories: how their names are recognised, and which type key each stands for.
namespace types {

// Whether the name ends in one of the endings of type directories.
bool isTypeDir(const std::string& dirName);

// The type key: the name less its last suffixLength bytes. A negative length cuts "-result" or "-setup";
// then the key of a name with another ending is empty. "Unknown" for an empty name.
std::string fromDirName(const std::string& dirName, int suffixLength);
inline std::string fromDirName(const std::string& dirName) {
    return fromDirName(dirName, -1);
}

// The type key of a configured directory: its name, except for the CPRI layers.
std::string fromConfiguredDir(const std::string& dirName);

// The one type of a mode whose files lie in the mode's directory itself; "" for every other mode.
std::string ofFlatMode(const std::string& mode);

// Whether an entry beside the port directories stands for the fiber monitor.
bool isFiberMonitor(std::string_view entryName);

} // namespace types
