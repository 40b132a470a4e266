#pragma once

#include <ctime>
#include <string>

#include "common/UniqueFd.h"

// Reads the dates of the files of one directory, by their names relative to it: by a full path the system
// walks down all components again for each file, which costs a fifth of a list.
class DateReader {
public:
    // descriptor: of the directory while it is open; with -1 the directory is opened again.
    DateReader(const std::string& directory, int descriptor);

    // Status-change time, kUnknownTime when the system does not tell; see FileDate.h.
    std::time_t read(const char* fileName) const;

private:
    const std::string& m_directory;
    UniqueFd m_own;   // when the directory was not open
    int m_descriptor; // -1: by full paths
};
