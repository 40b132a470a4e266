#include "common/Report.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "common/ControlBytes.h"
#include "common/Retry.h"

void report(std::string_view what, std::string_view subject, std::string_view why) {
    std::string line = "fileman: ";
    line.append(what).append(" ").append(withoutControlBytes(subject)).append(": ").append(why).append("\n");
    // One write call, so that the lines of processes that share a log do not mix. A failed write is ignored:
    // there is no other place to report it.
    if (retryInterrupted([&] { return ::write(STDERR_FILENO, line.data(), line.size()); }) < 0)
        return;
}

void reportErrno(std::string_view what, std::string_view subject, int errorNumber) {
    report(what, subject, std::strerror(errorNumber));
}

bool reportUnlessAbsent(std::string_view what, std::string_view subject, int errorNumber) {
    for (const int absence : {ENOENT, ENOTDIR, EACCES, ELOOP, ENAMETOOLONG}) {
        if (errorNumber == absence)
            return false;
    }
    reportErrno(what, subject, errorNumber);
    return true;
}
