#include "cgi/pages/CGICommonUtils.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "cgi/answer/Answers.h"
#include "cgi/answer/Header.h"
#include "cgi/pages/PageLine.h"
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

int writeCells(const std::string& cells) {
    CGICommonUtils::writeHTMLine("\t<tr>");
    CGICommonUtils::writeHTMLine("\t" + cells);
    return CGICommonUtils::writeHTMLine("\t</tr>");
}

int writeVariable(const char* name, const std::string& stored) {
    return writeCells(CGICommonUtils::createHTMLine(
        page::either(R"(<th width="30%%">%s</th><td>%s</td>)", "<th>%s</th><td>%s</td>"), name,
        page::value(stored).c_str()));
}

int writeVariable(const char* name) {
    return writeVariable(name, orNull(std::getenv(name)));
}

// Returns CONTENT_LENGTH as a 64-bit decimal number; 0 when it is unset or not a number.
std::string contentLength() {
    const char* const text = std::getenv("CONTENT_LENGTH");
    return std::to_string(text == nullptr ? 0 : std::strtoll(text, nullptr, 10));
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

int CGICommonUtils::writePageTop(const char* indent) {
    writeHTMLine(createHTMLine(R"(%s<div class="topmenu">)", indent));
    writeHTMLine(createHTMLine("%s\t<div class=\"topmenu-logo\"></div>", indent));
    return writeHTMLine(createHTMLine("%s</div>", indent));
}

int CGICommonUtils::writePageFoot(const char* indent) {
    writeHTMLine(createHTMLine(
        R"(%s<div style="height:32px; line-height:32px; text-align:center; color:#FFFFFF;">)", indent));
    writeHTMLine(createHTMLine(
        "%s\t<div id=\"copyright\">Copyright (c) the Result File Manager authors</div>", indent));
    return writeHTMLine(createHTMLine("%s</div>", indent));
}

int CGICommonUtils::writeDebugInfo(const char* text) {
    writeCGIHeader();
    writeHTMLBeginNode();
    std::printf("%s\r\n", orNull(text));
    return writeHTMLEndNode();
}

int CGICommonUtils::writeRequestInfo() {
    writeCGIHeader();
    writeHTMLBeginNode();
    page::strictLine(0, "<head>");
    page::writeMeta();
    page::strictLine(0, "</head>");
    page::strictLine(0, "<body>");
    writeHTMLine(page::either(
        R"(<table border="1" cellpadding="0" cellspacing="0" align="center" width="40%">)", "<table>"));
    writeVariable("CONTENT_LENGTH", contentLength());
    for (const char* const name :
         {"QUERY_STRING", "CONTENT_TYPE", "REMOTE_ADDR", "REQUEST_METHOD", "PATH_INFO", "PATH_TRANSLATED"})
        writeVariable(name);
    writeHTMLine("</table>");
    page::strictLine(0, "</body>");
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
