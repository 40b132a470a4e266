#pragma once

#include <array>
#include <list>
#include <map>
#include <string>
#include <string_view>

// Small functions on strings, paths, dates and queries for all folders. They work on bytes. Only the digit
// table is state. No function reports an error; each returns a value that means failure. createDateTime also
// writes a line on standard error when the system fails, but not for a missing file.
class CCommUtils {
public:
    // --- text ---

    // True for a null pointer and for "".
    static bool isEmpty(const char* s);
    static bool isStartsWith(std::string_view s, std::string_view prefix);
    static bool isEndsWith(std::string_view s, std::string_view suffix);
    // Ignores the case of ASCII letters.
    static bool isEquals(std::string_view a, std::string_view b);
    // Changes ASCII letters only, like isEquals.
    static std::string lowerCase(std::string s);
    // Whether part occurs in s, case-sensitively.
    static bool isContains(std::string_view s, std::string_view part);
    // Whether an item equals s exactly.
    static bool isContains(const std::list<std::string>& items, const std::string& s);
    // Whether the end of name, from its last '.' on, is exactly one of extensions.
    static bool isMatchedFile(const std::list<std::string>& extensions, std::string_view name);
    // Appends the pieces of text between separator bytes; a trailing separator adds no empty piece.
    static void split(std::list<std::string>& out, const std::string& separators, const std::string& text);
    // Writes each item and the separator, then removes the last byte. It removes only one byte even for a
    // longer separator. This is intentional: callers with longer separators rely on the remainder.
    static std::string join(const std::list<std::string>& items, const std::string& separator);
    // Returns s without the " \t\f\v\n\r" at its end.
    static std::string trimRight(const std::string& s);
    // Returns s without its last count bytes, or "" when it has no more than that.
    static std::string cutLast(const std::string& s, std::size_t count);

    // --- paths and files ---

    static bool isFileExists(const std::string& path);
    // The same test as isFileExists: true for a plain file too. This is intentional: a loader notices the
    // difference when it opens the path.
    static bool isDirExists(const std::string& path);
    // The last component up to its first dot: "/a/x.tar.gz" gives "x".
    static std::string baseFileName(const std::string& path);
    // The last component with its extension. Unlike dirName, it is "" when the path has no '/'. This is
    // intentional.
    static std::string completeFileName(const std::string& path);
    // The last component; the whole path when it has no '/'.
    static std::string dirName(const std::string& path);
    // The component before the last one. It is "" for a path with one '/', and the whole path without a '/'.
    static std::string upDirName(const std::string& path);
    // Everything before the last '/'.
    static std::string absFilePath(const std::string& path);
    // The status-change time of the file itself (lstat: a link is not followed) in local time, as
    // "YYYY-MM-DD hh:mm:ss". All digits are zero when lstat fails.
    static std::string createDateTime(const std::string& path);
    // The first line of a file, cut to 127 bytes and right-trimmed; "" when it cannot be read.
    static std::string readInfo(const std::string& path);
    // The part of that line after its first ':', with leading blanks; the whole line without a ':'.
    static std::string getSoftVer(const std::string& path);

    // --- query strings ---

    // The value of each byte as a hexadecimal digit; 0 for any other byte.
    static std::array<int, 256> cgiHexValue;
    static void cgiSetupConstants();
    // Percent-decodes length bytes into a new zero-terminated buffer, which the caller frees with free().
    // Returns 0, or 1 without a buffer when there is no memory. Malformed escapes are decoded, not refused.
    static int cgiUnescapeChars(char** out, const char* in, int length);
    // Splits a decoded query at '&' and '=' into out. A repeated key keeps its first value. Always returns 1.
    static int parseQueryInfo(std::map<std::string, std::string>& out, const char* query);
    // Adds one "key=value" piece to out. Returns false when the piece is empty or has no '='.
    static bool parseKeyValue(std::map<std::string, std::string>& out, const std::string& pair);
};
