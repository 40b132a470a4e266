#pragma once

#include <sys/types.h>

#include <string>

// Copies the content of the regular file "from" (links are followed) into a new file "to". When the copy is
// not whole, returns false with errno set and removes the new file.
bool copyToNewFile(const std::string& from, const std::string& to, mode_t mode);
