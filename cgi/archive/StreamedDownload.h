#pragma once

#include <functional>
#include <list>
#include <string>

#include "fileman/ResultInfo.h"

enum class Streamed {
    Sent,           // begin was called; a complete archive was written, or one that breaks off
    NothingStored,  // nothing was written, because no file of the records is stored any more
    NothingReadable // nothing was written, because none of the stored files can be read
};

// Writes the files of the records to standard output as one archive. It reads them directly from the storage.
// Each record has a directory with the name of CResultItem::uniqueName and with the same files as in a staged
// download. For each file that is left out, and for each id in unknown (no record has it), it writes a line
// on standard error and a line in the last entry, MISSING.txt.
//
// begin is passed to ArchiveStream. The caller must ignore SIGPIPE.
Streamed streamDownload(const std::list<const _ResultInfo*>& records, const std::list<std::string>& unknown,
                        std::function<void()> begin);
