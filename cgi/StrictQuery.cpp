#include "cgi/StrictQuery.h"

#include <algorithm>
#include <utility>

#include "common/CCommUtils.h"

namespace {

// -1 for what is no hexadecimal digit.
int digitValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<char> decodedByte(std::string_view digits) {
    if (digits.size() != 2)
        return std::nullopt;
    const int high = digitValue(digits[0]);
    const int low = digitValue(digits[1]);
    if (high < 0 || low < 0 || high + low == 0)
        return std::nullopt;
    return static_cast<char>(high * 16 + low);
}

std::optional<std::string> decoded(std::string_view piece) {
    std::string text;
    text.reserve(piece.size());
    for (std::size_t at = 0; at < piece.size(); ++at) {
        if (piece[at] != '%') {
            text += piece[at];
            continue;
        }
        const std::optional<char> byte = decodedByte(piece.substr(at + 1, 2));
        if (!byte)
            return std::nullopt;
        text += *byte;
        at += 2;
    }
    return text;
}

std::optional<std::list<std::string>> decodedList(std::string_view value) {
    std::list<std::string> pieces;
    CCommUtils::split(pieces, ",", std::string(value));
    for (std::string& piece : pieces) {
        std::optional<std::string> text = decoded(piece);
        if (!text)
            return std::nullopt;
        piece = std::move(*text);
    }
    return pieces;
}

// A piece without "=" says nothing. False when it cannot be decoded.
bool readPair(StrictQuery& query, std::string_view pair) {
    const std::size_t equals = pair.find('=');
    const auto key = decoded(pair.substr(0, equals));
    if (equals == std::string_view::npos)
        return key.has_value();
    const std::string_view encoded = pair.substr(equals + 1);
    const auto value = decoded(encoded);
    const auto list = decodedList(encoded);
    if (!key || !value || !list)
        return false;
    query.values.emplace(*key, *value);
    query.lists.emplace(*key, *list);
    return true;
}

} // namespace

std::optional<StrictQuery> StrictQuery::read(std::string_view encoded) {
    StrictQuery query;
    while (!encoded.empty()) {
        const std::string_view pair = encoded.substr(0, encoded.find('&'));
        if (!readPair(query, pair))
            return std::nullopt;
        encoded.remove_prefix(std::min(pair.size() + 1, encoded.size()));
    }
    return query;
}
