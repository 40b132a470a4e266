#pragma once

#include <functional>
#include <list>
#include <string>

#include "fileman/ResultInfo.h"

enum class Streamed {
    Sent,           // begin was called; a whole archive follows, or one that visibly breaks off
    NothingStored,  // nothing was written, because nothing of the records is stored any more
    NothingReadable // nothing was written, because nothing of what is stored can be read
};

// Writes the files of the records to standard output as one archive, straight from the storage. Each record
// has a directory, named by CResultItem::uniqueName, with the files that a staged download carries. For each
// file that is left out there are a line on standard error and one in the last entry, MISSING.txt; the same
// for each of the unknown ids, which no record has.
//
// begin is the one of ArchiveStream. The caller ignores SIGPIPE.
Streamed streamDownload(const std::list<const _ResultInfo*>& records, const std::list<std::string>& unknown,
                        std::function<void()> begin);
