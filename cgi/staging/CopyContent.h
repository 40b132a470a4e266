#pragma once

#include <sys/types.h>

#include <string>

// Copies the content of the regular file "from" (links are followed) into a new file "to". False with errno
// set when the copy is not whole; no file stays then.
bool copyToNewFile(const std::string& from, const std::string& to, mode_t mode);
