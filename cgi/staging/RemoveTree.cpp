#include "cgi/staging/RemoveTree.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "common/Report.h"
#include "fileman/disk/Directory.h"

bool removeTree(const std::string& path) {
    // unlink refuses directories only, and only those are descended into.
    if (::unlink(path.c_str()) == 0 || errno == ENOENT)
        return true;
    if (errno == EISDIR || errno == EPERM) {
        // A copy of a write-protected directory cannot be emptied otherwise.
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
