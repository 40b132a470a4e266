#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "support/trcfg_utils_fileio.h"
#include "support/trcfg_utils_log.h"
#include "support/trcfg_utils_paths.h"
#include "support/trcfg_utils_proc.h"

namespace {

struct ArgumentsDeleter {
    void operator()(char** arguments) const { std::free(static_cast<void*>(arguments)); }
};
using Arguments = std::unique_ptr<char*, ArgumentsDeleter>;

// "<base name of app> <args>"
HeapText joinCommandLine(const char* app, const char* args) {
    const char* name = baseNameOf(app);
    const std::size_t size = std::strlen(name) + std::strlen(args) + 2;
    HeapText line(static_cast<char*>(std::malloc(size)));
    if (line)
        std::snprintf(line.get(), size, "%s %s", name, args);
    return line;
}

// Splits `line` in place at blanks, even inside the base name of the program. This is intentional: the
// programs have always been called like this.
Arguments splitAtBlanks(char* line) {
    const std::size_t mostPieces = std::strlen(line) / 2 + 1;
    Arguments arguments(static_cast<char**>(std::calloc(mostPieces + 1, sizeof(char*))));
    if (!arguments)
        return arguments;
    char* state = nullptr;
    char** next = arguments.get();
    for (char* piece = ::strtok_r(line, " ", &state); piece != nullptr;
         piece = ::strtok_r(nullptr, " ", &state))
        *next++ = piece;
    return arguments;
}

} // namespace

int tr_proc_invoke(int level, const char* app, const char* args) {
    if (app == nullptr || *app == '\0') {
        TARN_LOG_AS(kProcSource, __func__, level, "running app not specified!");
        return 0;
    }
    if (::access(app, X_OK) != 0) {
        TARN_LOG_AS(kProcSource, __func__, level, "running app(%s) doesn't exist!", app);
        return 0;
    }
    if (args == nullptr)
        args = "";
    TARN_LOG_AS(kProcSource, __func__, level, "run app(%s) in proc=%d with args(%s) ...", app, ::getpid(),
                args);
    const HeapText line = joinCommandLine(app, args);
    const Arguments arguments = line ? splitAtBlanks(line.get()) : nullptr;
    if (arguments)
        ::execv(app, arguments.get());
    TARN_LOG_AS(kProcSource, __func__, level, "run app(%s) failed!(errno=%d)", app, errno);
    return 0;
}
