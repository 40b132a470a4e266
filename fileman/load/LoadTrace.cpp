#include "fileman/load/LoadTrace.h"

#include <unistd.h>

#include <cstdio>
#include <string>

#include "common/WriteAll.h"

namespace {

// Whole lines up to so many bytes are written at once: a pipe keeps them together among those of others.
constexpr std::size_t kPieceSize = 4096;

bool g_isForStandardError = false;
std::string g_held;

} // namespace

void trace::sendToStandardError() {
    g_isForStandardError = true;
}

void trace::write(std::string_view line) {
    if (!g_isForStandardError) {
        std::fwrite(line.data(), 1, line.size(), stdout);
        std::putchar('\n');
        return;
    }
    if (g_held.size() + line.size() >= kPieceSize)
        flush();
    g_held.append(line).append("\n");
}

// A log that refuses is no failure.
void trace::flush() {
    writeAll(STDERR_FILENO, g_held);
    g_held.clear();
}
