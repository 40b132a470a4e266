#include "cgi/answer/Disposition.h"

#include <algorithm>

#include "cgi/answer/Escape.h"
#include "common/ControlBytes.h"
#include "common/Utf8.h"

namespace {

// Printable ASCII but for the quote and what some clients take for the beginning of an escape.
bool isPlain(char c) {
    return c >= 0x20 && c < 0x7F && c != '"' && c != '\\' && c != '%';
}

// RFC 8187 knows no bytes, only characters: what is none becomes U+FFFD.
std::string asUtf8(std::string_view name) {
    std::string text;
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t size = utf8Length(name.substr(at));
        if (size == 0)
            text += "\xEF\xBF\xBD";
        else
            text += isControlByte(name[at]) ? "_" : name.substr(at, size);
        at += std::max<std::size_t>(size, 1);
    }
    return text;
}

std::string disposition(std::string_view kind, std::string_view fileName) {
    std::string plain(fileName);
    std::replace_if(
        plain.begin(), plain.end(), [](char c) { return !isPlain(c); }, '_');
    std::string value = std::string(kind) + "; filename=\"" + plain + "\"";
    // The characters that RFC 8187 leaves as they are.
    if (plain != fileName)
        value += "; filename*=UTF-8''" + escape::percentEncoded(asUtf8(fileName), "!#$&+-.^_`|~");
    return value;
}

} // namespace

std::string inlineDisposition(std::string_view fileName) {
    return disposition("inline", fileName);
}

std::string attachmentDisposition(std::string_view fileName) {
    return disposition("attachment", fileName);
}
