#include "conf/XmlFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <tinyxml.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "common/AtomicFile.h"
#include "common/CCommUtils.h"
#include "common/UniqueFd.h"

namespace {

constexpr off_t kLargestFile = 16 * 1024 * 1024;
constexpr int kDeepestNesting = 128;
constexpr int kMostAttributes = 4096;

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// The whole content of a regular file of acceptable size, or nothing.
std::optional<std::string> readRegularFile(const std::string& path) {
    // Without O_NONBLOCK a FIFO in the file's place would hold the request for ever.
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > kLargestFile)
        return std::nullopt;
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const ssize_t count = ::read(file.get(), &content[size], content.size() - size);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    content.resize(size);
    return content;
}

bool startsElement(char c) {
    // The parser takes every byte from 0x7f on as a letter.
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x7f || c == '_' || std::isalpha(byte) != 0;
}

// The position behind the next occurrence of end at or after position; the text's end when there is none.
std::size_t skipPast(std::string_view text, std::size_t position, std::string_view end) {
    const std::size_t found = text.find(end, position);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

struct StartTag {
    std::size_t end; // position behind the tag
    int attributes;
    bool selfClosing;
};

StartTag scanStartTag(std::string_view text, std::size_t position) {
    StartTag tag{text.size(), 0, false};
    char quote = '\0';
    for (std::size_t i = position; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != '\0') {
            if (c == quote)
                quote = '\0';
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '=') {
            ++tag.attributes;
        } else if (c == '>') {
            tag.end = i + 1;
            tag.selfClosing = text[i - 1] == '/';
            break;
        }
    }
    return tag;
}

bool startsWith(std::string_view text, std::size_t position, std::string_view prefix) {
    return text.compare(position, prefix.size(), prefix) == 0;
}

} // namespace

bool xml::isWithinLimits(std::string_view text) {
    int depth = 0;
    for (std::size_t i = text.find('<'); i < text.size(); i = text.find('<', i)) {
        if (startsWith(text, i, "<!--")) {
            i = skipPast(text, i + 4, "-->");
        } else if (startsWith(text, i, "<![CDATA[")) {
            i = skipPast(text, i, "]]>");
        } else if (startsWith(text, i, "</")) {
            depth = depth > 0 ? depth - 1 : 0;
            i = skipPast(text, i, ">");
        } else if (i + 1 < text.size() && startsElement(text[i + 1])) {
            const StartTag tag = scanStartTag(text, i + 1);
            if (depth + 1 > kDeepestNesting || tag.attributes > kMostAttributes)
                return false;
            depth += tag.selfClosing ? 0 : 1;
            i = tag.end;
        } else {
            i = skipPast(text, i, ">");
        }
    }
    return true;
}

bool xml::parseFile(TiXmlDocument& document, const std::string& path) {
    std::optional<std::string> content = readRegularFile(path);
    if (!content || content->empty() || !isWithinLimits(*content))
        return false;
    const File file(::fmemopen(content->data(), content->size(), "r"), &std::fclose);
    return file && document.LoadFile(file.get(), TIXML_ENCODING_UNKNOWN);
}

std::unique_ptr<TiXmlDocument> xml::load(const std::string& path) {
    auto document = std::make_unique<TiXmlDocument>(path.c_str());
    if (!parseFile(*document, path))
        document.reset();
    return document;
}

bool xml::save(const TiXmlDocument& document, const std::string& path) {
    char* text = nullptr;
    std::size_t size = 0;
    File file(::open_memstream(&text, &size), &std::fclose);
    if (!file)
        return false;
    const bool written = document.SaveFile(file.get());
    const bool complete = std::fclose(file.release()) == 0 && written;
    const std::unique_ptr<char, void (*)(void*)> owner(text, &std::free);
    return complete && replaceFile(path, std::string_view(text, size));
}

std::string xml::attribute(const TiXmlElement& element, const char* name) {
    const char* const value = element.Attribute(name);
    return value == nullptr ? std::string() : value;
}

bool xml::isNamed(const TiXmlElement& element, const char* name) {
    return CCommUtils::isEquals(element.ValueStr(), name);
}
