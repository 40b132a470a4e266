#include <gtest/gtest.h>

#include "cgi/CFileManCGI.h"

namespace {

TEST(Query, ActionByKeyPrecedenceWithoutRegardToCase) {
    const std::pair<const char*, unsigned> rows[] = {{"FMTYPE=all", 11},
                                                     {"fmtype=prof&fmtype=rslt", 3},
                                                     {"opertype=pdf&filter=FADV", 6},
                                                     {"fmtype=all&filter=fpri&opertype=pdf", 5},
                                                     {"opertype=view&fmtype=screen", 4},
                                                     {"filter=&fmtype=&opertype=view", 7},
                                                     {"opertype=delete", 11},
                                                     {"filter=other&fmtype=rslt", 2}};
    for (const auto& [query, action] : rows) {
        CFileManCGI cgi;
        cgi.parseQueryInfo(query);
        EXPECT_EQ(action, cgi.getFileManType()) << query;
    }
}

// The pieces of the key "k"; "refused" for a query that cannot be decoded.
TEST(StrictQuery, IsCutBeforeItIsDecoded) {
    using Pieces = std::list<std::string>;
    const std::tuple<const char*, Pieces, const char*> rows[] = {
        {"k=a%2Cb,c%26d%3De,%22+%27", {"a,b", "c&d=e", "\"+'"}, "a,b,c&d=e,\"+'"},
        {"k=%ff%C3%a9=,,x,", {"\xFF\xC3\xA9=", "", "x"}, "\xFF\xC3\xA9=,,x,"},
        {"&flag&k=1&k=2&", {"1"}, "1"},
        {"%6b=%252C", {"%2C"}, "%2C"},
        {"k=", {}, ""},
        {"k=x%4", {"refused"}, ""},
        {"k=%4g", {"refused"}, ""},
        {"x=%00&k=1", {"refused"}, ""},
        {"%zz&k=1", {"refused"}, ""},
    };
    for (const auto& [query, pieces, value] : rows) {
        CFileManCGI cgi;
        const bool isRead = cgi.readQuery(query);
        EXPECT_EQ(pieces, isRead ? cgi.getQueryList("k").value_or(Pieces()) : Pieces{"refused"}) << query;
        EXPECT_EQ(value, cgi.m_queryInfo["k"]) << query;
    }
}

// The flags are set first. Without the key they do not change; an unknown value clears both.
TEST(RequestFilter, SourcesOfEachListType) {
    const std::tuple<const char*, bool, bool> rows[] = {
        {"fmtype=All", true, true},    {"fmtype=prof", false, true}, {"fmtype=rslt", true, false},
        {"fmtype=Screen", true, true}, {"fmtype=x", false, false},   {"", true, true}};
    for (const auto& [query, results, profiles] : rows) {
        CFileManCGI cgi;
        cgi.parseQueryInfo(query);
        _ResultFilter filter{{}, {}, {}, {}, true, true, {}};
        cgi.getFilterFromRequest(filter);
        EXPECT_EQ(results, filter.includeResults) << query;
        EXPECT_EQ(profiles, filter.includeProfiles) << query;
    }
}

} // namespace
