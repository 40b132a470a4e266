#include <gtest/gtest.h>

#include "cgi/CFileManCGI.h"
#include "cgi/CGICommonUtils.h"

namespace {

using Query = std::map<std::string, std::string>;

TEST(Query, DecodedThenCut) {
    const std::pair<const char*, Query> rows[] = {
        {"", {}},
        {"a=1&a=2", {{"a", "1"}}},
        {"&a=1&&flag&b=2&", {{"a", "1"}, {"b", "2"}}},
        {"=x&a=&b=c=d", {{"", "x"}, {"a", ""}, {"b", "c=d"}}},
        {"name=x%26y%3Dz", {{"name", "x"}, {"y", "z"}}},
        {"q=a+b%2Bc%e9", {{"q", "a b+c\xe9"}}},
        {"a=%00&b=1", {{"a", ""}}},
        {"a=%4Gx%zz", {{"a", "@x"}}},
        {"a=1&b=%", {{"a", "1"}, {"b", ""}}},
        {"b=%4", {{"b", ""}}},
    };
    for (const auto& [encoded, expected] : rows) {
        ::setenv("QUERY_STRING", encoded, 1);
        Query query;
        EXPECT_EQ(1, CGICommonUtils::parseQueryInfo(query));
        EXPECT_EQ(expected, query) << encoded;
    }
    ::unsetenv("QUERY_STRING");
    Query query;
    EXPECT_EQ(1, CGICommonUtils::parseQueryInfo(query));
    EXPECT_TRUE(query.empty());
}

TEST(Query, PiecesReportWhetherTheyWereOffered) {
    CFileManCGI cgi;
    EXPECT_TRUE(cgi.parseKeyValue("k=1"));
    EXPECT_TRUE(cgi.parseKeyValue("k=2"));
    EXPECT_FALSE(cgi.parseKeyValue("k"));
    EXPECT_FALSE(cgi.parseKeyValue(""));
    EXPECT_EQ((Query{{"k", "1"}}), cgi.m_queryInfo);
}

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

TEST(RequestFilter, FieldsOfTheQuery) {
    CFileManCGI cgi;
    cgi.parseQueryInfo("fmtype=PROF&module=a,,b,&mode=x, y&test=&port=P1&jobid=j,k&account=A&locator=L"
                       "&type=T&fname=n&prefix=p&suffix=s");
    EXPECT_EQ("PROF", cgi.getFileManTypeString());
    _ResultFilter filter;
    cgi.getFilterFromRequest(filter);
    for (const _ResultFilter* const each : {&filter, &cgi.m_filter}) {
        EXPECT_FALSE(each->includeResults);
        EXPECT_TRUE(each->includeProfiles);
        EXPECT_EQ((std::list<std::string>{"a", "", "b"}), each->modules);
        EXPECT_EQ((std::list<std::string>{"x", " y"}), each->modes);
        EXPECT_TRUE(each->tests.empty());
        EXPECT_EQ((std::list<std::string>{"P1"}), each->ports);
        const _AdvanceInfo& advance = each->advanceInfo;
        const std::string texts[] = {advance.jobId,    advance.account, advance.locator, advance.type,
                                     advance.fileName, advance.prefix,  advance.suffix};
        const std::string expected[] = {"j,k", "A", "L", "T", "n", "p", "s"};
        EXPECT_TRUE(std::equal(std::begin(texts), std::end(texts), std::begin(expected)));
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

} // namespace
