#include "cgi/Output.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "common/Report.h"
#include "common/WriteAll.h"

namespace {

bool g_isStopped = false;

// The buffer is static: there is no better moment to run out of memory than before the first byte.
std::array<char, 65536> g_buffer;

#ifdef __GLIBC__
// For stdio, which takes 0 for a failure.
ssize_t writeForStdio(void* /*cookie*/, const char* text, std::size_t size) {
    return output::write({text, size}) ? static_cast<ssize_t>(size) : 0;
}
#endif

} // namespace

void output::open() {
#ifdef __GLIBC__
    // Left to itself, stdio drops what it holds when a write fails, and goes on behind the hole.
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
