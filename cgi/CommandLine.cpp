#include "cgi/CommandLine.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "common/Version.h"

bool asksForVersion(int argc, const char* const* argv) {
    if (argc != 2 || std::string_view(argv[1]) != "--version")
        return false;
    for (const char* const variable : {"GATEWAY_INTERFACE", "REQUEST_METHOD", "QUERY_STRING"}) {
        if (std::getenv(variable) != nullptr)
            return false;
    }
    return true;
}

void writeVersion() {
    std::printf("fileman.cgi %s\n", kVersion);
}
