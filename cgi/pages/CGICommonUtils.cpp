#include "cgi/pages/CGICommonUtils.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "cgi/answer/Answers.h"
#include "cgi/answer/Header.h"
#include "common/CCommUtils.h"

namespace {

// Applies a printf format. The result may have any length.
__attribute__((format(printf, 1, 2))) std::string formatLine(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string line;
    if (length > 0) {
        line.resize(static_cast<std::size_t>(length));
        std::vsnprintf(line.data(), line.size() + 1, format, again);
    }
    va_end(again);
    // A format may write a zero byte; the line ends there.
    line.resize(std::strlen(line.c_str()));
    return line;
}

// glibc prints a null string like this; other libraries crash.
const char* orNull(const char* text) {
    return text == nullptr ? "(null)" : text;
}

} // namespace

int CGICommonUtils::writeCGIHeader() {
    writePageHeader();
    return 0;
}

int CGICommonUtils::writeHTMLBeginNode() {
    return std::puts(Answers::current().areStrict() ? "<!DOCTYPE html>\n<html lang=\"en\">" : "<html>");
}

int CGICommonUtils::writeHTMLEndNode() {
    return std::puts("</html>");
}

int CGICommonUtils::writeHTMLine(const std::string& line) {
    return std::puts(line.c_str());
}

int CGICommonUtils::writeBeginNode(const std::string& tag) {
    return std::printf("<%s>\n", tag.c_str());
}

int CGICommonUtils::writeEndNode(const std::string& tag) {
    return std::printf("</%s>\n", tag.c_str());
}

int CGICommonUtils::writeDebugInfo(const char* text) {
    writeCGIHeader();
    writeHTMLBeginNode();
    std::printf("%s\r\n", orNull(text));
    return writeHTMLEndNode();
}

std::string CGICommonUtils::createHTMLine(const std::string& tag, const std::string& cls,
                                          const std::string& text) {
    return formatLine(R"(<%s class="%s">%s</%s>)", tag.c_str(), cls.c_str(), text.c_str(), tag.c_str());
}

std::string CGICommonUtils::createHTMLine(const char* format, const char* a) {
    return formatLine(format, orNull(a));
}

std::string CGICommonUtils::createHTMLine(const char* format, const char* a, const char* b) {
    return formatLine(format, orNull(a), orNull(b));
}

std::string CGICommonUtils::createHTMLine(const char* format, const char* a, const char* b, const char* c) {
    return formatLine(format, orNull(a), orNull(b), orNull(c));
}

std::string CGICommonUtils::createHTMLine(const char* format, const char* a, const char* b, const char* c,
                                          const char* d) {
    return formatLine(format, orNull(a), orNull(b), orNull(c), orNull(d));
}

std::string CGICommonUtils::createHTMLine(const char* format, int n) {
    return formatLine(format, n);
}

int CGICommonUtils::parseQueryInfo(std::map<std::string, std::string>& out) {
    const char* const query = std::getenv("QUERY_STRING");
    const std::string encoded = query == nullptr ? "" : query;
    char* decoded = nullptr;
    if (CCommUtils::cgiUnescapeChars(&decoded, encoded.c_str(), static_cast<int>(encoded.size())) != 0)
        return parseQueryInfo(out, "");
    const std::unique_ptr<char, decltype(&std::free)> owner(decoded, &std::free);
    return parseQueryInfo(out, decoded);
}

int CGICommonUtils::parseQueryInfo(std::map<std::string, std::string>& out, const char* query) {
    return CCommUtils::parseQueryInfo(out, query);
}

bool CGICommonUtils::parseKeyValue(std::map<std::string, std::string>& out, const std::string& pair) {
    return CCommUtils::parseKeyValue(out, pair);
}
