#include "cgi/confine/Programs.h"

#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <list>

#include "cgi/confine/Landlock.h"
#include "common/CCommUtils.h"
#include "common/UniqueFd.h"
#include "fileman/disk/Directory.h"

namespace {

// The programs in the commands of a delivery.
constexpr const char* kCommands[] = {"/bin/sh", "mkdir", "cp", "zip", "rm"};
constexpr const char* kRemovalCommands[] = {"/bin/sh", "rm"};

// Shared libraries, locales, and the files of the dynamic loader.
constexpr const char* kLibraries[] = {
    "/lib",       "/lib32",         "/lib64",           "/usr/lib",           "/usr/lib32",
    "/usr/lib64", "/usr/local/lib", "/etc/ld.so.cache", "/etc/ld.so.preload", "/usr/share/locale"};

// A script may name a script, but not without end.
constexpr int kMostSteps = 4;

using Start = std::array<char, 4096>;

// The beginning of the file, filled up with zeros.
Start readStart(const std::string& path) {
    Start start = {};
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file || ::read(file.get(), start.data(), start.size() - 1) < 0)
        start.fill('\0');
    return start;
}

// Returns all programs of this name in the directories of PATH. The shell runs the first one, which may be a
// script that runs another one. A name that contains '/' is returned as it is.
std::list<std::string> findPrograms(const std::string& name) {
    if (name.find('/') != std::string::npos)
        return {name};
    const char* const path = std::getenv("PATH");
    std::list<std::string> directories;
    CCommUtils::split(directories, ":", path == nullptr ? "/usr/bin:/bin" : path);
    std::list<std::string> found;
    for (const std::string& directory : directories) {
        std::string program = entryPath(directory, name);
        if (::access(program.c_str(), X_OK) == 0)
            found.push_back(std::move(program));
    }
    return found;
}

// The loader's path stands in the segment of type PT_INTERP. Linkers put headers and path into the first
// page.
template<typename Header, typename Segment>
std::string loaderOf(const Start& start) {
    Header header;
    std::memcpy(&header, start.data(), sizeof header);
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        const std::uint64_t at = header.e_phoff + i * sizeof(Segment);
        if (at > start.size() - sizeof(Segment))
            break;
        Segment segment;
        std::memcpy(&segment, &start[static_cast<std::size_t>(at)], sizeof segment);
        if (segment.p_type == PT_INTERP && segment.p_offset < start.size())
            return &start[static_cast<std::size_t>(segment.p_offset)];
    }
    return {};
}

// "#!/usr/bin/env python3" needs both programs.
std::list<std::string> startersOfScript(const Start& start) {
    std::string line(start.data() + 2);
    line.resize(std::min(line.find('\n'), line.size()));
    std::list<std::string> words;
    CCommUtils::split(words, " ", line);
    words.remove("");
    std::list<std::string> starters;
    if (!words.empty())
        starters.splice(starters.end(), {words.front()});
    if (words.size() > 1)
        starters.splice(starters.end(), findPrograms(*std::next(words.begin())));
    return starters;
}

std::list<std::string> startersOf(const std::string& path) {
    const Start start = readStart(path);
    if (start[0] == '#' && start[1] == '!')
        return startersOfScript(start);
    if (std::memcmp(start.data(), ELFMAG, SELFMAG) != 0)
        return {};
    return {start[EI_CLASS] == ELFCLASS64 ? loaderOf<Elf64_Ehdr, Elf64_Phdr>(start)
                                          : loaderOf<Elf32_Ehdr, Elf32_Phdr>(start)};
}

void allowWithStarters(Landlock& rules, const std::string& path, int steps) {
    if (path.empty() || steps == 0)
        return;
    rules.allow(path, Landlock::kReadFile | Landlock::kExecute);
    for (const std::string& starter : startersOf(path))
        allowWithStarters(rules, starter, steps - 1);
}

// Allows the commands, and what every program needs to start.
template<std::size_t Count>
void allowPrograms(Landlock& rules, const char* const (&commands)[Count]) {
    for (const char* const command : commands) {
        for (const std::string& program : findPrograms(command))
            allowWithStarters(rules, program, kMostSteps);
    }
    for (const char* const path : kLibraries)
        rules.allow(path, Landlock::kRead);
    rules.allow("/dev/null", Landlock::kReadFile | Landlock::kWriteFile);
}

} // namespace

void programs::allow(Landlock& rules, const std::string& path) {
    allowWithStarters(rules, path, kMostSteps);
}

void programs::allowCommands(Landlock& rules) {
    allowPrograms(rules, kCommands);
}

void programs::allowRemoval(Landlock& rules) {
    allowPrograms(rules, kRemovalCommands);
}
