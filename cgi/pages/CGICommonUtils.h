#pragma once

#include <map>
#include <string>

// Writes HTML lines to standard output, and formats lines. Every page uses it.
//
// A write function returns what puts or printf returned for its last line; no caller needs the value. Nothing
// is escaped, neither here nor by the callers: the browser side expects the names as they are stored.
class CGICommonUtils {
public:
    // --- fixed lines ---

    // Writes the content type and the empty line that ends a CGI header.
    static int writeCGIHeader();
    static int writeHTMLBeginNode();
    static int writeHTMLEndNode();

    // --- lines with the caller's text ---

    static int writeHTMLine(const std::string& line);
    static int writeBeginNode(const std::string& tag);
    static int writeEndNode(const std::string& tag);
    // Writes the bar with the logo; every line begins with indent.
    static int writePageTop(const char* indent);
    // Writes the copyright notice; every line begins with indent.
    static int writePageFoot(const char* indent);

    // --- whole responses ---

    static int writeDebugInfo(const char* text);
    // Writes a table of the CGI variables: the answer to every request that names no action.
    static int writeRequestInfo();

    // --- formatted lines of any length; a null string shows as "(null)" ---

    static std::string createHTMLine(const std::string& tag, const std::string& cls, const std::string& text);
    // These take a printf format with one "%s" (or one "%d") for each further argument.
    static std::string createHTMLine(const char* format, const char* a);
    static std::string createHTMLine(const char* format, const char* a, const char* b);
    static std::string createHTMLine(const char* format, const char* a, const char* b, const char* c);
    static std::string createHTMLine(const char* format, const char* a, const char* b, const char* c,
                                     const char* d);
    static std::string createHTMLine(const char* format, int n);

    // --- query strings: the same functions as in CCommUtils ---

    // Percent-decodes QUERY_STRING (empty when unset) and splits it into out.
    static int parseQueryInfo(std::map<std::string, std::string>& out);
    static int parseQueryInfo(std::map<std::string, std::string>& out, const char* query);
    static bool parseKeyValue(std::map<std::string, std::string>& out, const std::string& pair);
};
