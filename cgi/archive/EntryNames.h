#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

// Names as every reader of archives can take them: UTF-8, without bytes that mean something to some system.
// A byte that belongs to no UTF-8 character, a control character, '\', ':' and the dots of "." and ".." are
// written as %XX; so is a '%' that would look like one of these. Whoever reads %XX as the byte XX gets the
// stored name back. '/' stays, and separates names.
std::string plainName(std::string_view name);

// The names of one archive's entries: relative, no two alike. A name of more than 255 bytes, which is more
// than file systems take, is cut before its extension. A name that is taken gets a number: "name (2).html".
class EntryNames {
public:
    enum class Kind { File, Directory };

    // The whole name of an entry of that name in a directory of the archive; "" is its top. A directory's
    // name may hold '/': it stands for directories in each other.
    std::string take(const std::string& directory, std::string_view name, Kind kind);

private:
    std::unordered_map<std::string, unsigned> m_numbers; // how often a name was asked for
};
