#include <gtest/gtest.h>

#include "cgi/CFileManCGI.h"

namespace {

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

TEST(RequestFilter, UnknownListTypeListsNothing) {
    for (const char* const query : {"fmtype=x", "", "fmtype=Screen"}) {
        CFileManCGI cgi;
        cgi.parseQueryInfo(query);
        _ResultFilter filter{{}, {}, {}, {}, true, true, {}};
        cgi.getFilterFromRequest(filter);
        const bool isUnknown = query == std::string("fmtype=x");
        EXPECT_TRUE(filter.includeResults != isUnknown && filter.includeProfiles != isUnknown) << query;
    }
}

} // namespace
