#include "common/FileDate.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr char kNoDateTime[] = "0000-00-00 00:00:00";

// Writes the decimal digits of value right-aligned, zero-filled, so that they end before end.
void putDigits(char* end, int digits, int value) {
    for (; digits > 0; --digits, value /= 10)
        *--end = static_cast<char>('0' + value % 10);
}

} // namespace

std::time_t changeTime(const char* path) {
    return changeTimeAt(AT_FDCWD, path);
}

std::time_t changeTimeAt(int directory, const char* path) {
    struct stat status;
    return ::fstatat(directory, path, &status, AT_SYMLINK_NOFOLLOW) == 0 ? status.st_ctime : kUnknownTime;
}

// "%04d-%02d-%02d %02d:%02d:%02d", without the cost of printf: every listed file gets one.
std::string formatDateTime(std::time_t time) {
    // Read once; localtime would look at the zone again for every date.
    static const bool zoneIsRead = (::tzset(), true);
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
