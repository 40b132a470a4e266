#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

// Returns a name that every archive program can read. It is UTF-8 and has no characters with a special
// meaning on some system. The following are written as %XX: a byte that is not valid UTF-8, a control
// character, '\', ':', the dots of "." and "..", and a '%' that looks like the start of such an escape. If
// each %XX is replaced by the byte XX, the result is the stored name. '/' stays, because it separates names.
std::string plainName(std::string_view name);

// Chooses the names of the entries of one archive. They are relative and unique. File systems do not accept
// names of more than 255 bytes, so a longer name is cut before its extension. If a name is already used, the
// next one gets a number: "name (2).html".
class EntryNames {
public:
    // The longest full name, in bytes. When an archive is unpacked, longer paths cannot be created.
    static constexpr std::size_t kLongest = 4095;

    enum class Kind { File, Directory };

    // Returns the full name for an entry in a directory of the archive ("" is the top). If the name contains
    // '/', the entry is in nested directories.
    std::string take(const std::string& directory, std::string_view name, Kind kind);

private:
    std::unordered_map<std::string, unsigned> m_numbers; // how often each name was requested
};
