#include "common/FileDate.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "common/Report.h"
#include "common/Retry.h"

namespace {

constexpr char kNoDateTime[] = "0000-00-00 00:00:00";

constexpr char kTask[] = "tell the date of";

static_assert(sizeof(std::time_t) >= 8, "a change after 2038 has its date, also on a board of 32 bits");

// Returns false with errno set on failure.
bool askSystem(int directory, const char* path, std::time_t& time) {
    struct stat status;
    if (retryInterrupted([&] { return ::fstatat(directory, path, &status, AT_SYMLINK_NOFOLLOW); }) != 0)
        return false;
    time = status.st_ctime;
    return true;
}

// Reports a failure to read the time zone: the C library would silently use UTC.
bool readZone() {
    errno = 0;
    ::tzset();
    if (errno != 0)
        reportUnlessAbsent("read", "the time zone", errno);
    return true;
}

// Writes the decimal digits of value right-aligned, zero-filled, so that they end before end.
void putDigits(char* end, int digits, int value) {
    for (; digits > 0; --digits, value /= 10)
        *--end = static_cast<char>('0' + value % 10);
}

} // namespace

std::time_t changeTime(const std::string& path) {
    std::time_t time = kUnknownTime;
    if (!askSystem(AT_FDCWD, path.c_str(), time))
        reportUnlessAbsent(kTask, path, errno);
    return time;
}

std::time_t changeTimeIn(const std::string& path, int directory, const char* fileName) {
    std::time_t time = kUnknownTime;
    if (!askSystem(directory, fileName, time))
        reportUnlessAbsent(kTask, path + "/" + fileName, errno);
    return time;
}

// The format is "%04d-%02d-%02d %02d:%02d:%02d". printf would be slower, and every listed file has a date.
std::string formatDateTime(std::time_t time) {
    // The zone is read once. localtime (unlike localtime_r) would read it again for every date.
    static const bool zoneIsRead = readZone();
    std::string text = kNoDateTime;
    std::tm local = {};
    if (!zoneIsRead || time == kUnknownTime || ::localtime_r(&time, &local) == nullptr)
        return text;
    putDigits(&text[4], 4, local.tm_year + 1900);
    putDigits(&text[7], 2, local.tm_mon + 1);
    putDigits(&text[10], 2, local.tm_mday);
    putDigits(&text[13], 2, local.tm_hour);
    putDigits(&text[16], 2, local.tm_min);
    putDigits(&text[19], 2, local.tm_sec);
    return text;
}
