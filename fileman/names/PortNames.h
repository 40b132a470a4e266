#pragma once

#include <list>
#include <string>

#include "fileman/TestMode.h"

// Port directories: how their names are recognised, and which port or label each stands for.
namespace ports {

bool isPortDir(const std::string& dirName);

// The port name; "Unknown" for an empty directory name. A negative suffixLength cuts "port" or "port2".
std::string fromDirName(const std::string& dirName, int suffixLength);
inline std::string fromDirName(const std::string& dirName) {
    return fromDirName(dirName, -1);
}

// The port names of configured directory names.
std::list<std::string> fromDirNames(const std::list<std::string>& dirNames);

// The label of a 10G or dual-port directory in a family; "" for other names. matchEnd: the name only has to
// end in the pattern.
std::string labelOf(TestMode family, const std::string& dirName, bool matchEnd);
// The same for the OTU-X and ODU0 families, by the half.
std::string labelOfOtux(bool isResult, const std::string& dirName, bool matchEnd);

// Whether a record shows the directory's label instead of its port name.
bool showsLabel(TestMode family, const std::string& dirName);

} // namespace ports
