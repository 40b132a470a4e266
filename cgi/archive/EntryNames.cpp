#include "cgi/archive/EntryNames.h"

#include <cstddef>

#include "common/ControlBytes.h"
#include "common/DotEntry.h"
#include "common/Utf8.h"

namespace {

constexpr std::size_t kLongestName = 255;
constexpr std::size_t kLongestExtension = 16;

std::string escaped(char byte) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    return {'%', kDigits[value / 16], kDigits[value % 16]};
}

bool isHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Returns the first piece of the plain form of a name: one character, or the escape of one byte. Sets size to
// the number of bytes of the name that it stands for.
std::string nextPiece(std::string_view name, std::size_t& size) {
    size = utf8Length(name);
    const char first = name.front();
    const bool looksEscaped = first == '%' && name.size() > 2 && isHexDigit(name[1]) && isHexDigit(name[2]);
    if (size > 0 && !isControlByte(first) && first != '\\' && first != ':' && !looksEscaped)
        return std::string(name.substr(0, size));
    size = 1;
    return escaped(first);
}

// Returns the plain form of a name without '/', with at most limit bytes.
std::string plainComponent(std::string_view name, std::size_t limit) {
    std::string plain;
    if (isDotEntry(name)) {
        for (const char dot : name)
            plain += escaped(dot);
        return plain;
    }
    for (std::size_t size = 0; !name.empty(); name.remove_prefix(size)) {
        const std::string piece = nextPiece(name, size);
        if (plain.size() + piece.size() > limit)
            break;
        plain += piece;
    }
    return plain;
}

std::string_view extensionOf(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    const bool hasOne = dot != std::string_view::npos && dot > 0 && name.size() - dot <= kLongestExtension;
    return hasOne ? name.substr(dot) : std::string_view();
}

// Returns the plain form of the name with the number before its extension. The number 1 is left out.
std::string numbered(std::string_view name, EntryNames::Kind kind, unsigned number) {
    const std::string_view extension =
        kind == EntryNames::Kind::File ? extensionOf(name) : std::string_view();
    const std::string tail = (number > 1 ? " (" + std::to_string(number) + ")" : std::string()) +
                             plainComponent(extension, kLongestName);
    name.remove_suffix(extension.size());
    return plainComponent(name, kLongestName - tail.size()) + tail;
}

} // namespace

std::string plainName(std::string_view name) {
    std::string plain;
    while (!name.empty()) {
        const std::size_t slash = std::min(name.find('/'), name.size());
        plain += plainComponent(name.substr(0, slash), std::string::npos);
        name.remove_prefix(slash);
        if (!name.empty()) {
            plain += '/';
            name.remove_prefix(1);
        }
    }
    return plain;
}

std::string EntryNames::take(const std::string& directory, std::string_view name, Kind kind) {
    std::string place = directory.empty() ? "" : directory + "/";
    for (std::size_t slash = 0; (slash = name.find('/')) != std::string_view::npos;
         name.remove_prefix(slash + 1)) {
        if (slash > 0)
            place += plainComponent(name.substr(0, slash), kLongestName) + "/";
    }
    std::string taken = place + numbered(name, kind, 1);
    unsigned& last = m_numbers[taken];
    for (++last; last > 1; ++last) {
        taken = place + numbered(name, kind, last);
        if (m_numbers.emplace(taken, 1).second)
            break;
    }
    return taken;
}
