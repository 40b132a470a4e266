#include "conf/xml/XmlFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <tinyxml.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <new>
#include <string_view>
#include <utility>

#include "common/CCommUtils.h"
#include "common/Report.h"
#include "common/Retry.h"
#include "common/UniqueFd.h"
#include "conf/xml/XmlLimits.h"

namespace {

// The parser reads up to this many bytes after the end of a text that ends inside a UTF-8 character.
constexpr std::size_t kBytesBehind = 4;

// Returns false with errno set on failure.
bool readBytes(int file, std::string& content) {
    std::size_t size = 0;
    while (size < content.size()) {
        const ssize_t count =
            retryInterrupted([&] { return ::read(file, &content[size], content.size() - size); });
        if (count < 0)
            return false;
        if (count == 0)
            break;
        size += static_cast<std::size_t>(count);
    }
    content.resize(size);
    return true;
}

// Replaces "\r\n" and "\r" by "\n", in place.
void makeLineFeeds(std::string& text) {
    std::size_t size = text.find('\r');
    if (size == std::string::npos)
        return;
    for (std::size_t i = size; i < text.size(); ++i) {
        if (text[i] != '\r')
            text[size++] = text[i];
        else if (text[i + 1] != '\n')
            text[size++] = '\n';
    }
    text.resize(size);
}

// Prepares the text for the parser: it ends at the first zero byte, and every line ends in a line feed.
void normalise(std::string& text) {
    text.resize(std::min(text.find('\0'), text.size()));
    makeLineFeeds(text);
    text.append(kBytesBehind, '\0');
}

} // namespace

std::optional<std::string> xml::readContent(const std::string& path, off_t largest, Failure& failure) try {
    // Without O_NONBLOCK the open of a FIFO would block for ever.
    const UniqueFd file(
        retryInterrupted([&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }));
    struct stat status = {};
    // open(2) refuses a socket with ENXIO. Then status is all zero, which is not the mode of a regular file.
    if ((!file && errno != ENXIO) || (file && ::fstat(file.get(), &status) != 0)) {
        failure.errorNumber = errno;
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode) || status.st_size > largest) {
        failure.why = S_ISREG(status.st_mode) ? "it is too large" : "it is no regular file";
        return std::nullopt;
    }
    std::string content;
    content.reserve(static_cast<std::size_t>(status.st_size) + kBytesBehind);
    content.resize(static_cast<std::size_t>(status.st_size));
    if (!readBytes(file.get(), content)) {
        failure.errorNumber = errno;
        return std::nullopt;
    }
    return content;
} catch (const std::bad_alloc&) {
    failure.errorNumber = ENOMEM;
    return std::nullopt;
}

bool xml::parse(TiXmlDocument& document, std::string text, Failure& failure, Root root) try {
    normalise(text);
    if (const std::string_view limit = passedLimit(text); !limit.empty()) {
        failure.why = limit;
        return false;
    }
    document.SetTabSize(0); // no line and column numbers: they are not used and cost a tenth of the time
    document.Parse(text.c_str(), nullptr, TIXML_ENCODING_UNKNOWN);
    if (document.Error())
        failure.why = std::string("it is not well-formed, ") + document.ErrorDesc();
    else if (document.RootElement() != nullptr)
        failure.why = passedLimit(*document.RootElement());
    else if (root == Root::Needed)
        failure.why = "it has no root element";
    return failure.why.empty();
} catch (const std::bad_alloc&) {
    failure.errorNumber = ENOMEM;
    return false;
}

bool xml::parseFile(TiXmlDocument& document, const std::string& path, Root root) {
    Failure failure;
    std::optional<std::string> content = readContent(path, kLargestFile, failure);
    const bool isParsed = content && parse(document, std::move(*content), failure, root);
    if (!isParsed)
        reportFailure(path, failure);
    return isParsed;
}

std::unique_ptr<TiXmlDocument> xml::load(const std::string& path) {
    auto document = std::make_unique<TiXmlDocument>(path.c_str());
    if (!parseFile(*document, path))
        document.reset();
    return document;
}

void xml::reportFailure(const std::string& path, const Failure& failure) {
    constexpr std::string_view kTask = "read document";
    if (failure.errorNumber == ENOENT || failure.errorNumber == ENOTDIR)
        return;
    if (failure.errorNumber != 0)
        reportErrno(kTask, path, failure.errorNumber);
    else
        report(kTask, path, failure.why);
}

std::string xml::attribute(const TiXmlElement& element, const char* name) {
    const char* const value = element.Attribute(name);
    return value == nullptr ? std::string() : value;
}

bool xml::isNamed(const TiXmlElement& element, const char* name) {
    return CCommUtils::isEquals(element.ValueStr(), name);
}
