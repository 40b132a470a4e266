#pragma once

#include <string>

// Leaves plain files and directories below a staged directory: a link to a stored file becomes a copy of it,
// everything else goes, with a line on standard error. The next copy into the directory would write through a
// link or wait for ever at a FIFO, and the packer follows links into whatever they lead to, loops included.
// False when something could not be made plain.
//
// scratch: a path that nothing stands at, on the same file system.
bool keepPlainFiles(const std::string& directory, const std::string& scratch);

// Whether a link leads to a regular file below the storage or among what is staged for a download.
bool isLinkToStoredFile(const std::string& link);
