#pragma once

#include <string>

// Keeps only plain files and directories below a staged directory. A link to a stored file is replaced by a
// copy of that file. Everything else is removed, with a line on standard error. Reason: the next copy into
// the directory would write through a link or block at a FIFO, and the packer follows every link, even in a
// loop. Returns false when something could neither be replaced nor removed.
//
// scratch: an unused path on the same file system.
bool keepPlainFiles(const std::string& directory, const std::string& scratch);

// Whether a link leads to a regular file in the storage or among the files staged for a download.
bool isLinkToStoredFile(const std::string& link);
