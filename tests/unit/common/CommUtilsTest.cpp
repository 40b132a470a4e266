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

// Base name, complete name, last piece, the piece before it, and everything before the last piece.
TEST(Paths, Pieces) {
    const std::pair<std::string, std::string> rows[] = {
        {"", "||||"},
        {"abc", "abc||abc|abc|"},
        {"a/b", "b|b|b||a"},
        {"/a/b/", "|||b|/a/b"},
        {"dir.d/file", "file|file|file||dir.d"},
        {"/a/b/x.tar.gz", "x|x.tar.gz|x.tar.gz|b|/a/b"},
    };
    for (const auto& [path, pieces] : rows)
        EXPECT_EQ(pieces, Utils::baseFileName(path) + "|" + Utils::completeFileName(path) + "|" +
                              Utils::dirName(path) + "|" + Utils::upDirName(path) + "|" +
                              Utils::absFilePath(path));
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
    EXPECT_EQ("", Utils::readInfo(at("fifo")));
}

// Requests show the other rules of the decoder.
TEST(Query, PercentAfterPercentCountsAsADigit) {
    char* decoded = nullptr;
    ASSERT_EQ(0, Utils::cgiUnescapeChars(&decoded, "%%41", 4));
    EXPECT_STREQ("\x04\x31", decoded);
    std::free(decoded);
}

} // namespace
