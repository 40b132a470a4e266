#include "conf/XmlFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <tinyxml.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <optional>

#include "common/AtomicFile.h"
#include "common/CCommUtils.h"
#include "common/Report.h"
#include "common/UniqueFd.h"
#include "conf/XmlRewrite.h"
#include "conf/XmlTags.h"

namespace {

constexpr off_t kLargestFile = off_t{16} * 1024 * 1024;
constexpr int kDeepestNesting = 128;
constexpr std::ptrdiff_t kMostAttributes = 4096;

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
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    content.resize(size);
    return content;
}

std::string withLineFeeds(const std::string& text) {
    std::string lines;
    lines.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r')
            lines += text[i];
        else if (text[i + 1] != '\n')
            lines += '\n';
    }
    return lines;
}

// The text up to its first zero byte with line feeds for its line ends, as the parser takes it, and behind it
// the zero bytes that the parser looks at when the text breaks off within a UTF-8 character.
std::string normalised(const std::string& content) {
    std::string text = content.substr(0, content.find('\0'));
    if (text.find('\r') != std::string::npos)
        text = withLineFeeds(text);
    return text.append(4, '\0');
}

// An upper bound of the elements that can be open at once: to open one, the parser has to stand at a '>', and
// it never does so behind a '/'.
int mostOpenElements(const std::string& text) {
    int count = 0;
    for (std::size_t end = text.find('>'); end != std::string::npos; end = text.find('>', end + 1))
        count += end == 0 || text[end - 1] != '/' ? 1 : 0;
    return count;
}

bool isWithinLimits(const std::string& text) {
    // Most documents are so small that they cannot pass the limits.
    if (mostOpenElements(text) < kDeepestNesting &&
        std::count(text.begin(), text.end(), '=') <= kMostAttributes)
        return true;
    XmlTags tags(text);
    while (const std::optional<XmlTag> tag = tags.next()) {
        const int depth = tags.depth() + (*tag == XmlTag::Empty ? 1 : 0);
        if (depth > kDeepestNesting || static_cast<std::ptrdiff_t>(tags.values().size()) > kMostAttributes)
            return false;
    }
    return true;
}

bool parse(TiXmlDocument& document, const std::string& content) {
    const std::string text = normalised(content);
    if (text[0] == '\0' || !isWithinLimits(text))
        return false;
    document.SetTabSize(0); // nobody asks for lines and columns, which cost a tenth of the parser's time
    document.Parse(text.c_str(), nullptr, TIXML_ENCODING_UNKNOWN);
    return !document.Error();
}

// What the parser made of it, to compare by.
std::string printed(const TiXmlDocument& document) {
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

// The content with the attribute values of document; nothing when it would not be read back as document.
std::optional<std::string> rewritten(const std::string& content, const TiXmlDocument& document) {
    TiXmlDocument before;
    if (!parse(before, content))
        return std::nullopt;
    std::optional<std::string> changed = withAttributesOf(document, before, content);
    TiXmlDocument after;
    if (!changed || changed->size() > static_cast<std::size_t>(kLargestFile) || !parse(after, *changed) ||
        printed(after) != printed(document))
        return std::nullopt;
    return changed;
}

} // namespace

bool xml::parseFile(TiXmlDocument& document, const std::string& path) {
    const std::optional<std::string> content = readRegularFile(path);
    return content && parse(document, *content);
}

std::unique_ptr<TiXmlDocument> xml::load(const std::string& path) {
    auto document = std::make_unique<TiXmlDocument>(path.c_str());
    if (!parseFile(*document, path))
        document.reset();
    return document;
}

bool xml::save(const TiXmlDocument& document, const std::string& path) {
    const std::optional<std::string> content = readRegularFile(path);
    const std::optional<std::string> changed = content ? rewritten(*content, document) : std::nullopt;
    if (!changed) {
        report("cannot rewrite", path, "it cannot hold the new values, or changed meanwhile");
        return false;
    }
    return replaceFile(path, *changed);
}

std::string xml::attribute(const TiXmlElement& element, const char* name) {
    const char* const value = element.Attribute(name);
    return value == nullptr ? std::string() : value;
}

bool xml::isNamed(const TiXmlElement& element, const char* name) {
    return CCommUtils::isEquals(element.ValueStr(), name);
}
