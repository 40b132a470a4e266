#include <gtest/gtest.h>

#include "cgi/CFileManCGI.h"
#include "cgi/CGICommonUtils.h"

namespace {

TEST(Query, ActionByKeyPrecedenceWithoutRegardToCase) {
    const std::pair<const char*, unsigned> rows[] = {
        {"", 11},
        {"fmtype=ALL", 1},
        {"FMTYPE=all", 11},
        {"fmtype=rslt", 2},
        {"fmtype=prof&fmtype=rslt", 3},
        {"opertype=view&fmtype=screen", 4},
        {"fmtype=all&filter=fpri&opertype=pdf", 5},
        {"opertype=pdf&filter=FADV", 6},
        {"filter=other&fmtype=rslt", 2},
        {"filter=&fmtype=&opertype=view", 7},
        {"opertype=pdf", 8},
        {"opertype=Download", 9},
        {"opertype=delete", 11},
        {"opertype=all", 11},
    };
    for (const auto& [query, action] : rows) {
        CFileManCGI cgi;
        cgi.parseQueryInfo(query);
        EXPECT_EQ(action, cgi.getFileManType()) << query;
    }
}

TEST(RequestFilter, SourcesOfEachListType) {
    struct Row {
        const char* query;
        bool results, profiles;
    };
    // The flags are set before: an absent key leaves them, a value that is none of the four clears both.
    for (const Row& row : {Row{"fmtype=All", true, true},
                           {"fmtype=prof", false, true},
                           {"fmtype=rslt", true, false},
                           {"fmtype=Screen", true, true},
                           {"fmtype=x", false, false},
                           {"", true, true}}) {
        CFileManCGI cgi;
        cgi.parseQueryInfo(row.query);
        _ResultFilter filter;
        filter.includeResults = filter.includeProfiles = true;
        cgi.getFilterFromRequest(filter);
        EXPECT_EQ(row.results, filter.includeResults) << row.query;
        EXPECT_EQ(row.profiles, filter.includeProfiles) << row.query;
    }
}

TEST(HtmlLines, FormatsOfAnyLengthAndNullStrings) {
    EXPECT_EQ(
        "<span class=\"title\">Result</span>",
        CGICommonUtils::createHTMLine(std::string("span"), std::string("title"), std::string("Result")));
    EXPECT_EQ("a-(null)-c-d", CGICommonUtils::createHTMLine("%s-%s-%s-%s", "a", nullptr, "c", "d"));
    EXPECT_EQ("1-2-3", CGICommonUtils::createHTMLine("%s-%s-%s", "1", "2", "3"));
    EXPECT_EQ("-7%", CGICommonUtils::createHTMLine("%d%%", -7));
    const std::string longText(100000, 'x');
    EXPECT_EQ(longText + "|", CGICommonUtils::createHTMLine("%s|", longText.c_str()));
}

TEST(HtmlLines, PiecesThatNoPageIsMadeOf) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(4, CGICommonUtils::writeBeginNode("b"));
    EXPECT_EQ(5, CGICommonUtils::writeEndNode("b"));
    CGICommonUtils::writeDebugInfo("x");
    CFileManCGI::startOptionColumn(3, -4);
    CFileManCGI::endOptionColumn();
    EXPECT_EQ("<b>\n</b>\nContent-type:text/html;charset=utf-8\n\n<html>\nx\r\n</html>\n"
              "<div style=\"width:3; height:-4; float:left;border:1px solid red;\">\n</div>\n",
              testing::internal::GetCapturedStdout());
    EXPECT_EQ("id_row_check_7", CFileManCGI::getRowCheckId("7"));
}

} // namespace
