#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_proc.h"

int __tarn_log_level = kLogFailure;
const char* const __tarn_log_prefix[8] = {"err", "wrn", "inf", "dbg0", "dbg1", "dbg2", "dbg3", "dbg4"};
int __tarn_use_syslog = 0;
int tarnlog_with_clock = 0;
const char* __tarn_log_file = "";
const char* __tarn_log_func = "";
int __tarn_log_line = 0;

namespace {

constexpr int kNameCount = 8;
constexpr int kHighestLevel = 8;
constexpr std::size_t kMessageSize = 256;
constexpr unsigned long kClockMask = 0xffffff;

// A copy, because openlog() keeps the pointer that it gets.
char s_ident[256] = "";
int s_identOptions = 0;

void openSystemLog() {
    ::openlog(s_ident, s_identOptions, LOG_USER);
}

void useSystemLog(const char* ident) {
    std::snprintf(s_ident, sizeof s_ident, "%s", ident == nullptr ? "" : ident);
    s_identOptions = ident == nullptr ? LOG_PID : 0;
    __tarn_use_syslog = 1;
    openSystemLog();
}

void readClockSwitch() {
    const char* value = std::getenv("tarnlog_with_clock");
    if (value == nullptr || *value == '\0')
        return;
    const long number = std::strtol(value, nullptr, 10);
    tarnlog_with_clock = static_cast<int>(std::clamp<long>(number, INT_MIN, INT_MAX));
}

// The two highest levels share the last name.
const char* levelName(int level) {
    return __tarn_log_prefix[std::clamp(level, 0, kNameCount - 1)];
}

// Returns "" or the clock stamp, which appears between the parenthesis and the message.
void formatStamp(char (&stamp)[8]) {
    stamp[0] = '\0';
    if (tarnlog_with_clock != 0)
        std::snprintf(stamp, sizeof stamp, "%.6lx", static_cast<unsigned long>(std::clock()) & kClockMask);
}

void writeLine(int level, const char* message) {
    static constexpr char kLine[] = "%s(%s:%.4d %s)%s %s\n";
    char stamp[8];
    formatStamp(stamp);
    const char* name = levelName(level);
    const char* file = printable(__tarn_log_file);
    const char* func = printable(__tarn_log_func);
    // Priority "info" for every level is intentional: the log rules of the instrument use the name in the
    // line.
    if (__tarn_use_syslog != 0)
        ::syslog(LOG_INFO, kLine, name, file, __tarn_log_line, func, stamp, message);
    else
        std::fprintf(stderr, kLine, name, file, __tarn_log_line, func, stamp, message);
}

} // namespace

void trcfg_open(int useSyslog, const char* ident) {
    if (useSyslog != 0)
        useSystemLog(ident);
    readClockSwitch();
}

void trcfg_close(void) {
    if (__tarn_use_syslog == 0)
        return;
    __tarn_use_syslog = 0;
    ::closelog();
}

int tarnlog_str2level(const char* name) {
    if (name == nullptr)
        return -1;
    for (int level = 0; level < kNameCount; ++level) {
        if (std::strcmp(name, __tarn_log_prefix[level]) == 0)
            return level;
    }
    return -1;
}

int tarnlog_set_level(const char* name) {
    __tarn_log_level = tarnlog_str2level(name);
    return __tarn_log_level;
}

void __tarnlog_internal(int level, const char* fmt, ...) {
    const int savedErrno = errno;
    char message[kMessageSize] = "";
    va_list arguments;
    va_start(arguments, fmt);
    if (fmt != nullptr) {
        // NOLINTNEXTLINE(*-valist.Uninitialized): clang-tidy 14 sees va_start in the first such source only
        std::vsnprintf(message, sizeof message, fmt, arguments);
    }
    va_end(arguments);
    writeLine(std::clamp(level, 0, kHighestLevel), message);
    errno = savedErrno;
}

void releaseSyslogDescriptor() {
    if (__tarn_use_syslog == 0)
        return;
    ::closelog();
    openSystemLog(); // without LOG_NDELAY, so it connects at the next entry
}
