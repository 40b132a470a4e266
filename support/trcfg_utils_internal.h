// What the sources of the support library share. They get by without exceptions, operator new and the C++
// run-time library, so that a C program links with its C compiler.
#pragma once

#include <dirent.h>
#include <sys/types.h>

#include <cstdlib>
#include <memory>

// Levels of the library's own messages.
constexpr int kLogFailure = 0;
constexpr int kLogSuccess = 2;

// Source names in log lines.
constexpr const char* kProcSource = "trcfg_utils_proc";
constexpr const char* kFilesysSource = "trcfg_utils_filesys";

struct FreeDeleter {
    void operator()(void* memory) const { std::free(memory); }
};
using HeapText = std::unique_ptr<char, FreeDeleter>;

struct DirCloser {
    void operator()(DIR* stream) const { ::closedir(stream); }
};
using DirStream = std::unique_ptr<DIR, DirCloser>;

inline const char* printable(const char* text) {
    return text == nullptr ? "(null)" : text;
}

// What stands behind the last slash; empty behind a trailing one.
const char* baseNameOf(const char* path);

inline bool isDotEntry(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Reads until the end or `size` bytes, over interruptions. Returns how many; -1 if the first read fails.
ssize_t readUpTo(int fd, void* buffer, std::size_t size);

// False unless everything was written.
bool writeAll(int fd, const void* data, std::size_t size);

// A pseudo-random number, for names that nobody else is likely to take.
unsigned drawNumber();

// Removes what stands at `path`, with `force` files too, and logs each object that stays. True when nothing
// is left; `removed` (may be null) tells whether there was something.
bool removeTree(const char* path, bool force, bool* removed);

// Removes what stands at `path` unless it is a directory; one that another process makes meanwhile stays.
// Logs what cannot be removed.
void removeUnlessDirectory(const char* path);

// Gives up the descriptor of the system log, which the next entry opens again.
void releaseSyslogDescriptor();
