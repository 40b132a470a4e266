#include "fileman/disk/DirectoryDates.h"

#include <fcntl.h>

#include <climits>

#include "common/FileDate.h"
#include "fileman/disk/Directory.h"

namespace {

// A file whose full path is too long must have no date, although the system could read it by a relative name.
bool mayBeTooLong(const std::string& directory) {
    return directory.size() + 1 + NAME_MAX >= PATH_MAX;
}

} // namespace

DirectoryDates::DirectoryDates(const std::string& directory, int descriptor)
    : m_directory(directory), m_descriptor(descriptor) {
    if (mayBeTooLong(directory)) {
        m_descriptor = -1;
    } else if (m_descriptor < 0) {
        // If this open fails, full paths are used.
        m_own = UniqueFd(::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        m_descriptor = m_own.get();
    }
}

std::time_t DirectoryDates::read(const char* fileName) const {
    return m_descriptor < 0 ? changeTime(entryPath(m_directory, fileName))
                            : changeTimeIn(m_directory, m_descriptor, fileName);
}
