#include "cgi/answer/Escape.h"

#include <gtest/gtest.h>

#include "cgi/answer/ContentType.h"
#include "cgi/answer/Disposition.h"

namespace {

struct Row {
    std::string_view stored;
    std::string_view escaped;
};

// Bytes that are no UTF-8: a tail alone, a cut character, an overlong form, a surrogate, beyond U+10FFFF.
TEST(Escape, JsonOfEveryKindOfByte) {
    constexpr Row kRows[] = {
        {"a\"b\\c", R"(a\"b\\c)"},
        {"</script><!--&", R"(\u003c/script\u003e\u003c!--\u0026)"},
        {"\x01\t\n\r\x7F", R"(\u0001\u0009\u000a\u000d\u007f)"},
        {"\xC2\x85\xC2\xA0", "\\u0085\xC2\xA0"},
        {"\xE2\x80\xA7\xE2\x80\xA8\xE2\x80\xA9", "\xE2\x80\xA7\\u2028\\u2029"},
        {"\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80", "\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80"},
        {"\xFF\x80x", R"(\udcff\udc80x)"},
        {"\xE4\xB8<", R"(\udce4\udcb8\u003c)"},
        {"\xC1\xBF\xE0\xA0\x80\xE0\x9F\xBF", "\\udcc1\\udcbf\xE0\xA0\x80\\udce0\\udc9f\\udcbf"},
        {"\xF0\x90\x80\x80\xF0\x8F\xBF\xBF", "\xF0\x90\x80\x80\\udcf0\\udc8f\\udcbf\\udcbf"},
        {"\xED\x9F\xBF\xED\xA0\x80", "\xED\x9F\xBF\\udced\\udca0\\udc80"},
        {"\xF4\x8F\xBF\xBF\xF4\x90\x80\x80\xF5", "\xF4\x8F\xBF\xBF\\udcf4\\udc90\\udc80\\udc80\\udcf5"},
    };
    for (const Row& row : kRows) {
        std::string found;
        escape::appendJson(found, row.stored);
        EXPECT_EQ(row.escaped, found);
        // What is plain stands as it is, never the other way round.
        EXPECT_TRUE(!escape::isPlainInJson(row.stored) || found == row.stored) << row.stored;
    }
}

// The tests of whole answers have the other names.
TEST(Disposition, PercentIsNotTakenForAnEscape) {
    EXPECT_EQ("inline; filename=\"50_.png\"; filename*=UTF-8''50%25.png", inlineDisposition("50%.png"));
}

TEST(ContentType, ByTheLastEndingInAnyCase) {
    constexpr Row kRows[] = {
        {"/home/a.b/x.HTML", "text/html"},
        {"x.tar.png", "image/png"},
        {"x.PCAPng", "application/vnd.tcpdump.pcap"},
        {"/home/a.png/x", "application/octet-stream"},
        {"x", "application/octet-stream"},
    };
    for (const Row& row : kRows)
        EXPECT_EQ(row.escaped, contentTypeOf(row.stored)) << row.stored;
}

} // namespace
