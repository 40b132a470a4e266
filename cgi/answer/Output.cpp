#include "cgi/answer/Output.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "common/Report.h"
#include "common/WriteAll.h"

namespace {

bool g_isStopped = false;

// The buffer is static, so that a lack of memory shows before the first byte of the response.
std::array<char, 65536> g_buffer;

#ifdef __GLIBC__
// The write function of the stdio stream. stdio reads the result 0 as a failure.
ssize_t writeForStdio(void* /*cookie*/, const char* text, std::size_t size) {
    return output::write({text, size}) ? static_cast<ssize_t>(size) : 0;
}
#endif

} // namespace

void output::open() {
#ifdef __GLIBC__
    // By default stdio drops its buffer when a write fails, and the next write leaves a gap in the response.
    if (std::FILE* const stream = ::fopencookie(nullptr, "w", {nullptr, &writeForStdio, nullptr, nullptr}))
        stdout = stream;
#endif
    std::setvbuf(stdout, g_buffer.data(), _IOFBF, g_buffer.size());
}

bool output::write(std::string_view text) {
    if (!g_isStopped && !writeAll(STDOUT_FILENO, text)) {
        reportErrno("write", "the response", errno);
        g_isStopped = true;
    }
    return !g_isStopped;
}

void output::stop() {
    g_isStopped = true;
}

bool output::isStopped() {
    return g_isStopped;
}
