#pragma once

#include <array>
#include <list>
#include <map>
#include <string>
#include <string_view>

// The small string, path, date and query questions that every folder asks. All byte-wise, nothing keeps state
// but the digit table; no function reports an error, each has a value that stands for failure (createDateTime
// also writes a line when the system fails, not for a file that is not there).
class CCommUtils {
public:
    // --- text ---

    // True for a null pointer and for "".
    static bool isEmpty(const char* s);
    static bool isStartsWith(std::string_view s, std::string_view prefix);
    static bool isEndsWith(std::string_view s, std::string_view suffix);
    // Ignores the case of ASCII letters.
    static bool isEquals(std::string_view a, std::string_view b);
    // ASCII letters only, as isEquals compares them.
    static std::string lowerCase(std::string s);
    // Whether part occurs in s, case-sensitively.
    static bool isContains(std::string_view s, std::string_view part);
    // Whether an item equals s exactly.
    static bool isContains(const std::list<std::string>& items, const std::string& s);
    // Whether the text from the last '.' of name on, the dot included, is one of extensions (exactly).
    static bool isMatchedFile(const std::list<std::string>& extensions, std::string_view name);
    // Appends the pieces of text between separator bytes; a trailing separator adds no empty piece.
    static void split(std::list<std::string>& out, const std::string& separators, const std::string& text);
    // Each item followed by the separator, less the last byte. Only one byte goes, whatever the separator's
    // length. This is intentional: callers with longer separators rely on the remainder.
    static std::string join(const std::list<std::string>& items, const std::string& separator);
    // Without the trailing run of " \t\f\v\n\r".
    static std::string trimRight(const std::string& s);
    // Without its last count bytes; "" when it has no more than that.
    static std::string cutLast(const std::string& s, std::size_t count);

    // --- paths and files ---

    static bool isFileExists(const std::string& path);
    // The same test as isFileExists: a plain file counts too. This is intentional: loaders find out when they
    // open it.
    static bool isDirExists(const std::string& path);
    // The last component up to its first dot: "/a/x.tar.gz" gives "x".
    static std::string baseFileName(const std::string& path);
    // The last component with its extension; "" when the path holds no '/', unlike dirName. This is
    // intentional.
    static std::string completeFileName(const std::string& path);
    // The last component; the whole path when it holds no '/'.
    static std::string dirName(const std::string& path);
    // The component before the last; "" with one '/', the whole path with none.
    static std::string upDirName(const std::string& path);
    // Everything before the last '/'.
    static std::string absFilePath(const std::string& path);
    // Status-change time of the file itself (lstat: a link is not followed) in local time,
    // "YYYY-MM-DD hh:mm:ss"; zeros in that shape when lstat fails.
    static std::string createDateTime(const std::string& path);
    // First line (127 bytes at most) of a file, right-trimmed; "" when it cannot be read.
    static std::string readInfo(const std::string& path);
    // What follows the first ':' of that line, leading blanks kept; the whole line without one.
    static std::string getSoftVer(const std::string& path);

    // --- query strings ---

    // Value of each byte as a hexadecimal digit; 0 for bytes that are none.
    static std::array<int, 256> cgiHexValue;
    static void cgiSetupConstants();
    // Percent-decodes length bytes into a new zero-terminated buffer that the caller frees with free().
    // Returns 0, or 1 with nothing stored when there is no memory. Malformed escapes are decoded, not
    // refused.
    static int cgiUnescapeChars(char** out, const char* in, int length);
    // Cuts a decoded query at '&' and '=' into out; the first value of a key stays. Always 1.
    static int parseQueryInfo(std::map<std::string, std::string>& out, const char* query);
    // One "key=value" piece; false when it is empty or has no '='.
    static bool parseKeyValue(std::map<std::string, std::string>& out, const std::string& pair);
};
