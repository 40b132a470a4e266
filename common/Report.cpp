#include "common/Report.h"

#include <unistd.h>

#include <cstring>
#include <string>

namespace {

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

void appendPrintable(std::string& line, std::string_view text) {
    for (const char c : text)
        line += isControl(c) ? '?' : c;
}

} // namespace

void report(std::string_view what, std::string_view subject, std::string_view why) {
    std::string line = "fileman: ";
    line.append(what).append(" ");
    appendPrintable(line, subject);
    line.append(": ").append(why).append("\n");
    // One write, so that the lines of processes that share a log do not mix; a log that refuses is no
    // failure.
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0)
        return;
}

void reportErrno(std::string_view what, std::string_view subject, int errorNumber) {
    report(what, subject, std::strerror(errorNumber));
}
