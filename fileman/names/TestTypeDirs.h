#pragma once

#include <string>
#include <string_view>

// The names of type directories: how they are recognised, and which type key belongs to each.
namespace types {

// Whether the name ends in one of the endings of type directories.
bool isTypeDir(const std::string& dirName);

// Returns the type key: the name without its last suffixLength bytes. A negative length cuts "-result" or
// "-setup" instead; then a name with another ending gives "". An empty name gives "Unknown".
std::string fromDirName(const std::string& dirName, int suffixLength);
inline std::string fromDirName(const std::string& dirName) {
    return fromDirName(dirName, -1);
}

// Returns the type key of a configured directory. It is the name of the directory, except for the CPRI
// layers.
std::string fromConfiguredDir(const std::string& dirName);

// Whether an entry beside the port directories belongs to the fiber monitor.
bool isFiberMonitor(std::string_view entryName);

} // namespace types
