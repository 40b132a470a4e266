#include "common/CCommUtils.h"

#include <algorithm>

namespace {

// The same as tolower in the "C" locale, which none of our programs leaves. The lookups spend their time
// here.
char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

bool CCommUtils::isEmpty(const char* s) {
    return s == nullptr || *s == '\0';
}

bool CCommUtils::isStartsWith(std::string_view s, std::string_view prefix) {
    return s.compare(0, prefix.size(), prefix) == 0;
}

bool CCommUtils::isEndsWith(std::string_view s, std::string_view suffix) {
    return s.size() >= suffix.size() && s.compare(s.size() - suffix.size(), suffix.size(), suffix) == 0;
}

bool CCommUtils::isEquals(std::string_view a, std::string_view b) {
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lower(x) == lower(y); });
}

std::string CCommUtils::lowerCase(std::string s) {
    std::transform(s.begin(), s.end(), s.begin(), lower);
    return s;
}

bool CCommUtils::isContains(std::string_view s, std::string_view part) {
    return s.find(part) != std::string_view::npos;
}

bool CCommUtils::isContains(const std::list<std::string>& items, const std::string& s) {
    return std::find(items.begin(), items.end(), s) != items.end();
}

bool CCommUtils::isMatchedFile(const std::list<std::string>& extensions, std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot != std::string_view::npos &&
           std::find(extensions.begin(), extensions.end(), name.substr(dot)) != extensions.end();
}

void CCommUtils::split(std::list<std::string>& out, const std::string& separators, const std::string& text) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t end = text.find_first_of(separators, begin);
        if (end == std::string::npos) {
            out.push_back(text.substr(begin));
            return;
        }
        out.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
}

std::string CCommUtils::join(const std::list<std::string>& items, const std::string& separator) {
    std::string joined;
    for (const std::string& item : items)
        joined.append(item).append(separator);
    if (!joined.empty())
        joined.pop_back();
    return joined;
}

std::string CCommUtils::trimRight(const std::string& s) {
    return s.substr(0, s.find_last_not_of(" \t\f\v\n\r") + 1);
}

std::string CCommUtils::cutLast(const std::string& s, std::size_t count) {
    return count >= s.size() ? std::string() : s.substr(0, s.size() - count);
}
