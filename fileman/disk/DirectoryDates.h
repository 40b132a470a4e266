#pragma once

#include <ctime>
#include <string>

#include "common/UniqueFd.h"

// Reads the dates of the files of one directory. It uses names relative to the directory: with a full path
// the system would walk through all components again for each file, which costs a fifth of the time of a
// list.
class DirectoryDates {
public:
    // descriptor: the descriptor of the directory, or -1 if it is not open. Then this object opens it.
    DirectoryDates(const std::string& directory, int descriptor);

    // Returns the status-change time, or kUnknownTime on failure; see FileDate.h.
    std::time_t read(const char* fileName) const;

private:
    const std::string& m_directory;
    UniqueFd m_own;   // used when the caller gave no descriptor
    int m_descriptor; // -1: full paths are used
};
