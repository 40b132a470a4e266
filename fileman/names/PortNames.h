#pragma once

#include <list>
#include <string>

#include "fileman/TestMode.h"

// The names of port directories: how they are recognised, and which port or label belongs to each.
namespace ports {

bool isPortDir(const std::string& dirName);

// Returns the port name, or "Unknown" for an empty directory name. A negative suffixLength cuts "port" or
// "port2".
std::string fromDirName(const std::string& dirName, int suffixLength);
inline std::string fromDirName(const std::string& dirName) {
    return fromDirName(dirName, -1);
}

// Returns the port names of configured directory names.
std::list<std::string> fromDirNames(const std::list<std::string>& dirNames);

// Returns the label of a 10G or dual-port directory in a family, or "" for other names. matchEnd: compare
// only the end of the name.
std::string labelOf(TestMode family, const std::string& dirName, bool matchEnd);
// The same for the families OTU-X and ODU0, where the half decides.
std::string labelOfOtux(bool isResult, const std::string& dirName, bool matchEnd);

// Whether a record shows the directory's label instead of its port name.
bool showsLabel(TestMode family, const std::string& dirName);

} // namespace ports
