// What the sources of the support library share to open, read and write files. They use no exceptions, no
// operator new and no part of the C++ run-time library, so that a C compiler can link a program with this
// library.
#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <cstdlib>
#include <memory>

#include "common/UniqueFd.h"

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
using HeapText = std::unique_ptr<char, FreeDeleter>;

struct DirCloser {
    void operator()(DIR* stream) const { ::closedir(stream); }
};
using DirStream = std::unique_ptr<DIR, DirCloser>;

// Reads at most `size` bytes, up to the end of the file. Repeats a read that a signal interrupts. Returns the
// number of bytes, or -1 if the first read fails.
ssize_t readUpTo(int fd, void* buffer, std::size_t size);

// Returns true if everything was written.
bool writeAll(int fd, const void* data, std::size_t size);

// Opens only a regular file, and never blocks on a FIFO. Else there is no descriptor.
UniqueFd openRegular(const char* path, int flags, mode_t mode);

// Returns true if everything is on the disk.
bool flushAndClose(UniqueFd& file);
