#include "support/trcfg_utils_paths.h"

#include <cstring>

#include "common/DotEntry.h"

bool isMissing(const char* text) {
    return text == nullptr || *text == '\0';
}

const char* baseNameOf(const char* path) {
    const char* slash = std::strrchr(path, '/');
    return slash == nullptr ? path : slash + 1;
}

bool canNameFile(const char* path) {
    if (isMissing(path))
        return false;
    const char* name = baseNameOf(path);
    return *name != '\0' && !isDotEntry(name);
}

HeapText parentOf(const char* path) {
    std::size_t length = std::strlen(path);
    const auto dropSlashes = [&] {
        while (length > 1 && path[length - 1] == '/')
            --length;
    };
    dropSlashes();
    while (length > 0 && path[length - 1] != '/')
        --length;
    dropSlashes();
    return HeapText(length == 0 ? ::strdup(".") : ::strndup(path, length));
}
