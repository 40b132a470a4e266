#pragma once

#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

// The query of a strict answer: cut at "&", at the first "=" and, in lists, at ","; only then is each piece
// percent-decoded (RFC 3986). So a value may hold any byte but zero, and "+" is a plus.
struct Query {
    // Nothing for a query with a malformed escape or an escaped zero byte.
    static std::optional<Query> read(std::string_view encoded);

    std::map<std::string, std::string> values;           // the first value of a key, decoded as a whole
    std::map<std::string, std::list<std::string>> lists; // the same as a list; without a trailing empty piece
};
