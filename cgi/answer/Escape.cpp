#include "cgi/answer/Escape.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "common/ControlBytes.h"
#include "common/Utf8.h"

namespace {

constexpr std::string_view kReplacementCharacter = "\xEF\xBF\xBD";

struct Escape {
    char character;
    std::string_view text;
};

constexpr std::array<Escape, 5> kHtmlEscapes = {
    {{'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&#39;"}}};

constexpr std::array<Escape, 2> kJsonEscapes = {{{'"', "\\\""}, {'\\', "\\\\"}}};

template<std::size_t Size>
const Escape* findEscape(const std::array<Escape, Size>& escapes, char c) {
    const auto* const found = std::find_if(escapes.begin(), escapes.end(),
                                           [c](const Escape& escape) { return escape.character == c; });
    return found == escapes.end() ? nullptr : found;
}

// U+0080 to U+009F, control characters of two bytes.
bool isLateControl(std::string_view character) {
    return character.size() == 2 && character[0] == '\xC2' && static_cast<unsigned char>(character[1]) < 0xA0;
}

std::string_view htmlOf(std::string_view character) {
    if (const Escape* const escape = findEscape(kHtmlEscapes, character[0]))
        return escape->text;
    const bool isBlank = character[0] == '\t' || character[0] == '\n';
    const bool isControl = (isControlByte(character[0]) && !isBlank) || isLateControl(character);
    return isControl ? kReplacementCharacter : character;
}

constexpr std::array<bool, 256> plainJsonBytes() {
    std::array<bool, 256> plain{};
    for (std::size_t byte = 0x20; byte < 0x7F; ++byte)
        plain[byte] = byte != '"' && byte != '\\' && byte != '<' && byte != '>' && byte != '&';
    return plain;
}

constexpr std::array<bool, 256> kIsPlainInJson = plainJsonBytes();

bool isPlainByte(char c) {
    return kIsPlainInJson[static_cast<unsigned char>(c)];
}

void appendNumber(std::string& out, unsigned number) {
    std::array<char, 8> text{};
    std::snprintf(text.data(), text.size(), "\\u%04x", number);
    out += text.data();
}

// A character that is not plain.
void appendJsonCharacter(std::string& out, std::string_view character) {
    const unsigned lastByte = static_cast<unsigned char>(character.back());
    if (const Escape* const escape = findEscape(kJsonEscapes, character[0]))
        out += escape->text;
    else if (character.size() == 1 || isLateControl(character))
        appendNumber(out, lastByte);
    else if (character == "\xE2\x80\xA8" || character == "\xE2\x80\xA9")
        appendNumber(out, 0x2000 + lastByte - 0x80);
    else
        out += character;
}

bool isLetterOrDigit(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

} // namespace

std::string escape::forHtml(std::string_view value) {
    std::string html;
    html.reserve(value.size());
    for (std::size_t at = 0; at < value.size();) {
        const std::size_t size = utf8Length(value.substr(at));
        html += size == 0 ? kReplacementCharacter : htmlOf(value.substr(at, size));
        at += std::max<std::size_t>(size, 1);
    }
    return html;
}

bool escape::isPlainInJson(std::string_view value) {
    return std::all_of(value.begin(), value.end(), &isPlainByte);
}

void escape::appendJson(std::string& out, std::string_view value) {
    constexpr unsigned kSurrogateOfByte = 0xDC00;
    for (std::size_t at = 0; at < value.size();) {
        const auto* const end = std::find_if_not(value.begin() + at, value.end(), &isPlainByte);
        const auto plainEnd = static_cast<std::size_t>(end - value.begin());
        out += value.substr(at, plainEnd - at);
        at = plainEnd;
        if (at == value.size())
            return;
        const std::size_t size = utf8Length(value.substr(at));
        if (size == 0)
            appendNumber(out, kSurrogateOfByte + static_cast<unsigned char>(value[at]));
        else
            appendJsonCharacter(out, value.substr(at, size));
        at += std::max<std::size_t>(size, 1);
    }
}

bool escape::isPlainInCsv(std::string_view value) {
    return std::none_of(value.begin(), value.end(),
                        [](char c) { return c == '"' || c == ',' || c == '\r' || c == '\n'; });
}

void escape::appendCsv(std::string& out, std::string_view value) {
    out += '"';
    for (const char c : value)
        out.append(c == '"' ? 2 : 1, c);
    out += '"';
}

std::string escape::percentEncoded(std::string_view value, std::string_view plain) {
    std::string encoded;
    for (const char c : value) {
        if (isLetterOrDigit(c) || plain.find(c) != std::string_view::npos) {
            encoded += c;
            continue;
        }
        std::array<char, 4> text{};
        std::snprintf(text.data(), text.size(), "%%%02X",
                      static_cast<unsigned>(static_cast<unsigned char>(c)));
        encoded += text.data();
    }
    return encoded;
}
