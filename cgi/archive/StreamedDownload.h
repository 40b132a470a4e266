#pragma once

#include <functional>
#include <list>

#include "fileman/ResultInfo.h"

enum class Streamed {
    Sent,           // begin was called, and an archive or the visible beginning of one follows the header
    NothingStored,  // nothing was written: of none of the records is anything stored any more
    NothingReadable // nothing was written: something is stored, but nothing of it can be read
};

// Writes the records' files to standard output as one archive, straight from the storage: a directory for
// each record, named by CResultItem::uniqueName, with what a staged download carries. What is left out has a
// line on standard error and one in the entry MISSING.txt, the last.
//
// begin: as for ArchiveStream. The caller ignores SIGPIPE.
Streamed streamDownload(const std::list<const _ResultInfo*>& records, std::function<bool()> begin);
