#include "fileman/load/LoadTrace.h"

#include <unistd.h>

#include <cstdio>

#include "common/ControlBytes.h"
#include "common/WriteAll.h"

namespace {

// Whole lines up to so many bytes are written at once: a pipe keeps them together among those of others.
constexpr std::size_t kPieceSize = 4096;

bool g_isForStandardError = false;
std::string g_held;

void writeLine(const std::string& line) {
    if (!g_isForStandardError) {
        std::fwrite(line.data(), 1, line.size(), stdout);
        std::putchar('\n');
        return;
    }
    if (g_held.size() + line.size() >= kPieceSize)
        trace::flush();
    g_held.append(line).append("\n");
}

} // namespace

void trace::sendToStandardError() {
    g_isForStandardError = true;
}

void trace::writeCommonCount(Half half, int count) {
    writeLine((half == Half::Result ? "Common port result: " : "Common profile: ") + std::to_string(count) +
              ".");
}

void trace::writeFoundAt(const std::string& path) {
    writeLine("Find at:" + withoutControlBytes(path));
}

// A log that refuses is no failure.
void trace::flush() {
    writeAll(STDERR_FILENO, g_held);
    g_held.clear();
}
