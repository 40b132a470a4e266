#include "fileman/disk/DateReader.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>

#include "common/FileDate.h"
#include "common/Report.h"
#include "fileman/disk/StorageTree.h"

namespace {

// Going to a directory costs as much as this many walks.
constexpr int kFewFiles = 4;

std::string workingDirectory() {
    std::array<char, PATH_MAX> path;
    return ::getcwd(path.data(), path.size()) == nullptr ? std::string() : path.data();
}

} // namespace

void DateReader::setDirectory(const std::string& directory, int descriptor) {
    m_directory = directory;
    m_descriptor = mayBeRelative() ? descriptor : -1;
    m_filesAsked = 0;
    m_isInside = false;
}

// A file whose path is too long as a whole has no date.
bool DateReader::mayBeRelative() const {
    return m_directory.size() + 1 + NAME_MAX < PATH_MAX;
}

std::time_t DateReader::read(const char* fileName) {
    if (m_descriptor >= 0)
        return changeTimeIn(m_directory, m_descriptor, fileName);
    if (++m_filesAsked == kFewFiles)
        enter();
    return m_isInside ? changeTimeIn(m_directory, AT_FDCWD, fileName)
                      : changeTime(entryPath(m_directory, fileName));
}

void DateReader::enter() {
    if (m_start.empty())
        m_start = workingDirectory();
    if (!m_start.empty() && mayBeRelative())
        m_isInside = ::chdir(m_directory.c_str()) == 0;
}

void DateReader::leave() {
    if (!m_start.empty() && ::chdir(m_start.c_str()) != 0)
        reportErrno("return to", m_start, errno);
    m_start.clear();
    m_isInside = false;
    m_filesAsked = 0;
}
