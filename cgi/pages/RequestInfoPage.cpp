#include <cstdlib>
#include <string>

#include "cgi/pages/CGICommonUtils.h"
#include "cgi/pages/PageHead.h"
#include "cgi/pages/PageLine.h"

namespace {

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
    const char* const value = std::getenv(name);
    return writeVariable(name, value == nullptr ? "(null)" : value);
}

// Returns CONTENT_LENGTH as a 64-bit decimal number; 0 when it is unset or not a number.
std::string contentLength() {
    const char* const text = std::getenv("CONTENT_LENGTH");
    return std::to_string(text == nullptr ? 0 : std::strtoll(text, nullptr, 10));
}

} // namespace

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
