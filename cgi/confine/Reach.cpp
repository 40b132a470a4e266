#include "cgi/confine/Reach.h"

#include <cstdlib>
#include <list>
#include <string_view>

#include "cgi/confine/Landlock.h"
#include "cgi/confine/Programs.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"

namespace {

constexpr char kTemporary[] = "/tmp";

// Version 1 of Landlock refuses to move a file from one directory to another, whatever the rules say.
constexpr int kVersionThatMoves = 2;

// The converter is not part of this program. It may need an interpreter, libraries and fonts.
constexpr const char* kConverterPrograms[] = {"/bin", "/sbin", "/usr", "/opt", "/lib", "/lib32", "/lib64"};
constexpr const char* kConverterFiles[] = {"/etc/fonts",
                                           "/etc/ld.so.cache",
                                           "/etc/ld.so.preload",
                                           "/etc/passwd",
                                           "/etc/group",
                                           "/etc/nsswitch.conf",
                                           "/etc/mime.types",
                                           "/etc/locale.alias",
                                           "/var/cache/fontconfig",
                                           "/dev/urandom",
                                           "/dev/random",
                                           "/dev/zero",
                                           "/proc"};

std::list<std::string> pathsOf(const char* variable) {
    std::list<std::string> paths;
    if (const char* const value = std::getenv(variable))
        CCommUtils::split(paths, ":", value);
    return paths;
}

// The files that tzset(3) reads.
void allowTimeZone(Landlock& rules) {
    constexpr char kZones[] = "/usr/share/zoneinfo";
    rules.allow("/etc/localtime", Landlock::kReadFile);
    const char* const zone = std::getenv("TZ");
    if (zone == nullptr)
        return;
    const char* const directory = std::getenv("TZDIR");
    rules.allow(directory == nullptr ? kZones : directory, Landlock::kReadFile);
    if (const char* const path = *zone == ':' ? zone + 1 : zone; *path == '/')
        rules.allow(path, Landlock::kReadFile);
}

void allowReading(Landlock& rules) {
    rules.allow(paths::kHome, Landlock::kRead);
    allowTimeZone(rules);
}

void allowCommands(Landlock& rules) {
    programs::allowCommands(rules);
    allowReading(rules);
}

// FILEMAN_CONVERTER_READS and FILEMAN_CONVERTER_WRITES name further places of a converter that needs them.
void allowConverter(Landlock& rules) {
    for (const char* const path : kConverterPrograms)
        rules.allow(path, Landlock::kRead | Landlock::kExecute);
    for (const char* const path : kConverterFiles)
        rules.allow(path, Landlock::kRead);
    for (const std::string& path : pathsOf("FILEMAN_CONVERTER_READS"))
        rules.allow(path, Landlock::kRead);
    for (const std::string& path : pathsOf("FILEMAN_CONVERTER_WRITES"))
        rules.allow(path, Landlock::kRead | Landlock::kWrite);
    programs::allow(rules, paths::kPdfConverter);
}

bool reportsMissingRules() {
    const char* const value = std::getenv("FILEMAN_CONFINEMENT");
    return value != nullptr && std::string_view(value) == "report";
}

void enforce(const Landlock& rules) {
    if (!rules.enforce() && reportsMissingRules())
        report("confine", "the request", "this kernel has no Landlock, or too old a version");
}

} // namespace

void reach::confineToReading() {
    Landlock rules;
    allowReading(rules);
    enforce(rules);
}

void reach::confineToStreaming() {
    Landlock rules;
    allowReading(rules);
    rules.allow("/usr/lib/locale", Landlock::kRead);
    enforce(rules);
}

void reach::confineToStaging(Delivery delivery, const std::string& directory) {
    Landlock rules(kVersionThatMoves);
    allowCommands(rules);
    rules.allow(directory, Landlock::kRead | Landlock::kWrite);
    rules.allow(kTemporary, Landlock::kReadFile);
    if (delivery == Delivery::Pdf)
        allowConverter(rules);
    enforce(rules);
}

void reach::confineKeeper(const std::string& directory) {
    Landlock rules(kVersionThatMoves);
    programs::allowRemoval(rules);
    rules.allow(directory, Landlock::kRead | Landlock::kWrite);
    rules.enforce();
}

void reach::confineCommand(const CommandPlaces& places) {
    Landlock rules;
    allowCommands(rules);
    if (!places.writes.empty())
        rules.allow(places.writes, Landlock::kRead | Landlock::kWrite);
    if (!places.reads.empty())
        rules.allow(places.reads, Landlock::kReadFile);
    if (!places.removes.empty())
        rules.allow(places.removes, Landlock::kReadDirectory | Landlock::kRemove);
    rules.enforce();
}

void reach::confineConverter() {
    Landlock rules;
    allowCommands(rules);
    allowConverter(rules);
    rules.allow(paths::kPdfTaskList, Landlock::kReadFile);
    rules.allow(paths::kPdfDir, Landlock::kRead | Landlock::kWrite);
    rules.enforce();
}
