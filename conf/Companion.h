#pragma once

#include <string>
#include <string_view>

// The file that stores the advanced information of a listed file D/base.ext. The difference is intentional:
// the instruments store it in different places.
enum class StoredInfo {
    Plain,     // D/base
    Companion, // D/base.xml
    Itself,    // D/base.ext
};

// Returns the name of that file. It lies in the directory of the listed file. base: the name up to its first
// dot.
std::string storedInfoName(StoredInfo kind, std::string_view fileName, std::string_view base);
