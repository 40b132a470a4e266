// Functions that the sources of the support library share. They use no exceptions, no operator new and no
// part of the C++ run-time library, so that a C compiler can link a program with this library.
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

// Returns the part of path after its last slash. It is empty if path ends in a slash.
const char* baseNameOf(const char* path);

// Reads at most `size` bytes, up to the end of the file. Repeats a read that a signal interrupts. Returns the
// number of bytes, or -1 if the first read fails.
ssize_t readUpTo(int fd, void* buffer, std::size_t size);

// Returns true if everything was written.
bool writeAll(int fd, const void* data, std::size_t size);

// Returns a pseudo-random number, for names that other processes are unlikely to use.
unsigned drawNumber();

// Removes the directory tree at `path`; with `force` also files. Logs each object that stays. Returns true if
// nothing is left. `removed` (may be null) is set if there was something to remove.
bool removeTree(const char* path, bool force, bool* removed);

// Removes the object at `path` unless it is a directory, also one that another process makes at the same
// time. Logs a failure.
void removeUnlessDirectory(const char* path);

// Closes the descriptor of the system log. The next entry opens it again.
void releaseSyslogDescriptor();
