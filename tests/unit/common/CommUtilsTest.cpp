#include <sys/stat.h>

#include "TestFiles.h"
#include "common/CCommUtils.h"

namespace {

using Utils = CCommUtils;

TEST(Text, OnlyEqualityIgnoresCase) {
    EXPECT_TRUE(Utils::isEquals("RSLT", "rslt"));
    EXPECT_FALSE(Utils::isEquals("rslt", "rslt ") || Utils::isEquals("\xC4", "\xE4"));
    EXPECT_TRUE(Utils::isStartsWith("ab", "ab") && Utils::isEndsWith("cab", "ab"));
    EXPECT_FALSE(Utils::isStartsWith("Ab", "ab") || Utils::isStartsWith("cab", "ab"));
    EXPECT_FALSE(Utils::isEndsWith("aB", "ab") || Utils::isEndsWith("ab", "aab"));
    EXPECT_TRUE(Utils::isContains("cabd", "ab") && Utils::isContains("", ""));
    EXPECT_FALSE(Utils::isContains("Ab", "ab") || Utils::isContains(Names{".HTML"}, ".html"));
    EXPECT_TRUE(Utils::isMatchedFile({".png", ".jpeg"}, "shot.01.jpeg"));
    EXPECT_FALSE(Utils::isMatchedFile({".png"}, "x.png.") || Utils::isMatchedFile({".jpg"}, "shot.JPG"));
    EXPECT_TRUE(Utils::isEmpty(nullptr) && Utils::isEmpty("") && !Utils::isEmpty(" "));
}

TEST(Text, SplitJoinTrim) {
    const std::pair<std::string, Names> rows[] = {
        {"", {}}, {"a;,b", {"a", "", "b"}}, {",a", {"", "a"}}, {"a,", {"a"}}, {"a b", {"a b"}}};
    for (const auto& [text, expected] : rows) {
        Names out;
        Utils::split(out, ",;", text);
        EXPECT_EQ(expected, out) << text;
    }
    EXPECT_EQ("a, b,", Utils::join({"a", "b"}, ", "));
    EXPECT_EQ("abc", Utils::join({"ab", "cd"}, ""));
    EXPECT_EQ("", Utils::join({"", ""}, ""));
    EXPECT_EQ(" \ta", Utils::trimRight(" \ta \t\f\v\n\r"));
}

TEST(Paths, Pieces) {
    const struct {
        std::string path, base, complete, last, parent, before;
    } rows[] = {
        {"", "", "", "", "", ""},
        {"abc", "abc", "", "abc", "abc", ""},
        {"a/b", "b", "b", "b", "", "a"},
        {"/a/b/", "", "", "", "b", "/a/b"},
        {"dir.d/file", "file", "file", "file", "", "dir.d"},
        {"/a/b/x.tar.gz", "x", "x.tar.gz", "x.tar.gz", "b", "/a/b"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        EXPECT_EQ(row.base, Utils::baseFileName(row.path));
        EXPECT_EQ(row.complete, Utils::completeFileName(row.path));
        EXPECT_EQ(row.last, Utils::dirName(row.path));
        EXPECT_EQ(row.parent, Utils::upDirName(row.path));
        EXPECT_EQ(row.before, Utils::absFilePath(row.path));
    }
}

TEST_F(FilesTest, FirstLineAndVersion) {
    const std::string full(127, 'x');
    const std::tuple<std::string, std::string, std::string> rows[] = {
        {"Version: 1.0 \r\nmore", "Version: 1.0", " 1.0"},
        {"\nsecond", "", ""},
        {std::string("ab \0cd", 6), "ab", "ab"},
        {full + "yz\n", full, full}};
    for (const auto& [content, info, version] : rows) {
        EXPECT_EQ(info, Utils::readInfo(write(content)));
        EXPECT_EQ(version, Utils::getSoftVer(at("file")));
    }
    ASSERT_EQ(0, ::mkfifo(at("fifo").c_str(), 0600));
    for (const std::string& path : {at("missing"), at(""), at("fifo")})
        EXPECT_EQ("", Utils::readInfo(path)) << path;
    EXPECT_TRUE(Utils::isFileExists(at("file")) && Utils::isDirExists(at("file")));
    EXPECT_FALSE(Utils::isDirExists(at("file/x")));
}

TEST(Query, TwoBytesAfterPercentAlwaysCountAsDigits) {
    const std::pair<std::string, std::string> rows[] = {{"a+b%2Bc%e9%E9", "a b+c\xE9\xE9"},
                                                        {"%4Gx", "@x"},
                                                        {"%+1%zz!", std::string("\x01\0!", 3)},
                                                        {"%%41", "\x04\x31"},
                                                        {"a%", "a"},
                                                        {"a%4", "a"}};
    for (const auto& [encoded, expected] : rows) {
        char* decoded = nullptr;
        ASSERT_EQ(0, Utils::cgiUnescapeChars(&decoded, encoded.data(), static_cast<int>(encoded.size())));
        EXPECT_EQ(expected + '\0', std::string(decoded, expected.size() + 1)) << encoded;
        std::free(decoded);
    }
    std::map<std::string, std::string> query{{"a", "kept"}};
    EXPECT_EQ(1, Utils::parseQueryInfo(query, "&a=1&flag&=x&&b=c=d&b=2&"));
    EXPECT_EQ((std::map<std::string, std::string>{{"", "x"}, {"a", "kept"}, {"b", "c=d"}}), query);
}

} // namespace
