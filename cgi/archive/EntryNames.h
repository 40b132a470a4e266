#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

// Returns a name that every archive program can read: UTF-8, without characters that have a meaning on some
// system. These are written as %XX: a byte outside of UTF-8 characters, a control character, '\', ':', the
// dots of "." and "..", and a '%' that would look like such an escape. Replacing %XX by the byte XX gives the
// stored name again. '/' stays and separates names.
std::string plainName(std::string_view name);

// The names of the entries of one archive. They are relative and unique. A name of more than 255 bytes, which
// file systems do not accept, is cut before its extension. A name that is already used gets a number:
// "name (2).html".
class EntryNames {
public:
    enum class Kind { File, Directory };

    // Returns the full name for an entry in a directory of the archive ("" is the top). The name of a
    // directory may contain '/', which means nested directories.
    std::string take(const std::string& directory, std::string_view name, Kind kind);

private:
    std::unordered_map<std::string, unsigned> m_numbers; // how often each name was requested
};
