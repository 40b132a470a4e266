#include "cgi/staging/RemoveTree.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "common/Report.h"
#include "fileman/disk/Directory.h"

bool removeTree(const std::string& path) {
    // unlink fails with EISDIR or EPERM for a directory. The walk enters directories only.
    if (::unlink(path.c_str()) == 0 || errno == ENOENT)
        return true;
    if (errno == EISDIR || errno == EPERM) {
        // Without this a copy of a write-protected directory could not be emptied.
        ::chmod(path.c_str(), S_IRWXU);
        emptyDirectory(path);
        if (::rmdir(path.c_str()) == 0)
            return true;
    }
    reportErrno("remove", path, errno);
    return false;
}

bool emptyDirectory(const std::string& path) {
    const auto directory = readWholeDirectory(path);
    bool isEmpty = directory.has_value();
    if (directory) {
        for (const DirEntry entry : *directory)
            isEmpty = removeTree(entryPath(path, entry.name)) && isEmpty;
    }
    return isEmpty;
}
