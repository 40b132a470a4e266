#include "cgi/confine/Limits.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "common/Report.h"
#include "common/SignalHandler.h"
#include "common/WriteAll.h"

namespace {

struct Limit {
    __rlimit_resource resource;
    const char* variable;
    rlim_t normal;
    rlim_t unit; // bytes or seconds
};

constexpr rlim_t kMebibyte = rlim_t{1024} * 1024;

// A list of a million results needs a sixth of this memory and, on a desktop processor, two seconds. The time
// is for a converter on a slow board. Few boards have room for a file of this size.
constexpr Limit kLimits[] = {
    {RLIMIT_CPU, "FILEMAN_CPU_SECONDS", 3600, 1},
    {RLIMIT_AS, "FILEMAN_MEMORY_MIB", 1024, kMebibyte},
    {RLIMIT_FSIZE, "FILEMAN_FILE_MIB", 65536, kMebibyte},
    {RLIMIT_NOFILE, "FILEMAN_OPEN_FILES", 256, 1},
};

rlim_t chosenValue(const Limit& limit) {
    const char* const text = std::getenv(limit.variable);
    if (text == nullptr)
        return limit.normal;
    char* end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(text, &end, 10);
    if (*text >= '0' && *text <= '9' && *end == '\0' && errno == 0 && value <= RLIM_INFINITY / limit.unit)
        return static_cast<rlim_t>(value);
    report("read", limit.variable, "it is no number, the normal limit holds");
    return limit.normal;
}

// Sets the soft limit only, so that the converter can get the hard one back.
void apply(const Limit& limit) {
    const rlim_t value = chosenValue(limit);
    rlimit current = {};
    if (value == 0 || ::getrlimit(limit.resource, &current) != 0)
        return;
    current.rlim_cur = std::min({value * limit.unit, current.rlim_cur, current.rlim_max});
    ::setrlimit(limit.resource, &current);
}

void endWithoutTime(int /*signalNumber*/) {
    constexpr std::string_view kLine =
        "fileman: answer the request: it took all the processor time of FILEMAN_CPU_SECONDS\n";
    writeAll(STDERR_FILENO, kLine);
    ::_exit(EXIT_FAILURE);
}

} // namespace

void limits::apply() {
    const rlimit none = {0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    for (const Limit& limit : kLimits)
        ::apply(limit);
    setSignalHandler(SIGXCPU, &endWithoutTime);
    // Writing fails with EFBIG instead, and its caller reports that.
    std::signal(SIGXFSZ, SIG_IGN);
}

void limits::liftForConverter() {
    rlimit current = {};
    if (::getrlimit(RLIMIT_AS, &current) != 0)
        return;
    current.rlim_cur = current.rlim_max;
    ::setrlimit(RLIMIT_AS, &current);
}
