#pragma once

#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// The query for a strict answer. It is split at "&", at the first "=" and, in lists, at ",". Then each piece
// is percent-decoded (RFC 3986). So a value may contain any byte except zero, and "+" is a plus.
struct StrictQuery {
    // Returns nullopt for a query with a malformed escape or an escaped zero byte.
    static std::optional<StrictQuery> read(std::string_view encoded);

    std::map<std::string, std::string> values;           // the first value of a key, decoded as a whole
    std::map<std::string, std::list<std::string>> lists; // the same as a list, without an empty last piece
};
