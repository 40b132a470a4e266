#include "support/trcfg_utils_proc.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/UniqueFd.h"
#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_paths.h"

namespace {

// The kernel appends this to the link of an executable that was removed or replaced.
constexpr char kDeleted[] = " (deleted)";

constexpr int kProcPathSize = 64;

void stripSuffix(char* text, const char* suffix) {
    const std::size_t length = std::strlen(text);
    const std::size_t suffixLength = std::strlen(suffix);
    if (length > suffixLength && std::strcmp(text + length - suffixLength, suffix) == 0)
        text[length - suffixLength] = '\0';
}

bool readExeName(const char* pid, char (&name)[TR_BASENAME_SIZE]) {
    char link[kProcPathSize];
    std::snprintf(link, sizeof link, "/proc/%s/exe", pid);
    char target[PATH_MAX + 1];
    const ssize_t length = ::readlink(link, target, sizeof target - 1);
    if (length < 0)
        return false;
    target[length] = '\0';
    stripSuffix(target, kDeleted);
    const int count = std::snprintf(name, sizeof name, "%s", baseNameOf(target));
    return count >= 0;
}

// Reads at most TR_ARGV_SIZE - 1 bytes and adds a NUL. Returns -1 if there is no such process.
ssize_t readCommandLine(const char* pid, char* buffer) {
    char path[kProcPathSize];
    std::snprintf(path, sizeof path, "/proc/%s/cmdline", pid);
    const UniqueFd file(::open(path, O_RDONLY | O_CLOEXEC));
    if (!file)
        return -1;
    const ssize_t count = readUpTo(file.get(), buffer, TR_ARGV_SIZE - 1);
    if (count >= 0)
        buffer[count] = '\0';
    return count;
}

// False for a process that ends during the call or whose files are not readable.
bool runsProgram(const char* pid, const char* name) {
    char exeName[TR_BASENAME_SIZE];
    if (readExeName(pid, exeName) && std::strcmp(exeName, name) == 0)
        return true;
    char arguments[TR_ARGV_SIZE];
    return readCommandLine(pid, arguments) > 0 && std::strcmp(baseNameOf(arguments), name) == 0;
}

bool isProcessEntry(DIR* proc, const dirent& entry) {
    if (std::isdigit(static_cast<unsigned char>(entry.d_name[0])) == 0)
        return false;
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == DT_DIR;
    struct stat status = {};
    return ::fstatat(::dirfd(proc), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(status.st_mode);
}

// Returns the number of the failed step, or 0.
int findProcesses(const char* program, pid_t* out, int max, int* count) {
    if (program == nullptr || *program == '\0')
        return 1;
    const char* name = baseNameOf(program);
    if (*name == '\0')
        return 2;
    const DirStream proc(::opendir("/proc"));
    if (!proc)
        return 11;
    while (*count < max) {
        const dirent* entry = ::readdir(proc.get());
        if (entry == nullptr)
            break;
        if (isProcessEntry(proc.get(), *entry) && runsProgram(entry->d_name, name))
            out[(*count)++] = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
    }
    return 0;
}

} // namespace

int tr_get_pidarr(const char* program, pid_t* out, int max) {
    int count = 0;
    const int step = findProcesses(program, out, out == nullptr ? 0 : max, &count);
    if (step == 0)
        return count;
    TARN_LOG_AS(kProcSource, __func__, kLogFailure, "find processes of program(%s) failed!(ret=%d)",
                printable(program), step);
    return -1;
}

pid_t tr_get_pidof(const char* program) {
    pid_t pid = -1;
    return tr_get_pidarr(program, &pid, 1) == 1 ? pid : -1;
}

int tr_pid2basename(int pid, char* buf) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%d", pid);
    char name[TR_BASENAME_SIZE];
    if (buf != nullptr && readExeName(digits, name)) {
        std::memcpy(buf, name, std::strlen(name) + 1);
        return 0;
    }
    TARN_LOG_AS(kProcSource, __func__, kLogFailure, "find program of process(pid=%d) failed!(ret=%d)", pid,
                buf == nullptr ? 1 : 11);
    return -1;
}

int tr_pid2argv(int pid, char* buf) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%d", pid);
    const ssize_t count = buf == nullptr ? -1 : readCommandLine(digits, buf);
    if (count < 0)
        TARN_LOG_AS(kProcSource, __func__, kLogFailure, "read arguments of process(pid=%d) failed!(ret=%d)",
                    pid, buf == nullptr ? 1 : 11);
    return static_cast<int>(count);
}
