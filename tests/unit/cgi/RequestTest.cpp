#include <gtest/gtest.h>

#include "cgi/CFileManCGI.h"

namespace {

TEST(Query, ActionByKeyPrecedenceWithoutRegardToCase) {
    const std::pair<const char*, unsigned> rows[] = {
        {"FMTYPE=all", 11},
        {"fmtype=prof&fmtype=rslt", 3},
        {"opertype=view&fmtype=screen", 4},
        {"fmtype=all&filter=fpri&opertype=pdf", 5},
        {"opertype=pdf&filter=FADV", 6},
        {"filter=other&fmtype=rslt", 2},
        {"filter=&fmtype=&opertype=view", 7},
        {"opertype=delete", 11},
    };
    for (const auto& [query, action] : rows) {
        CFileManCGI cgi;
        cgi.parseQueryInfo(query);
        EXPECT_EQ(action, cgi.getFileManType()) << query;
    }
}

TEST(RequestFilter, SourcesOfEachListType) {
    // The flags are set before: an absent key leaves them, a value that is none of the four clears both.
    const std::tuple<const char*, bool, bool> rows[] = {
        {"fmtype=All", true, true},    {"fmtype=prof", false, true}, {"fmtype=rslt", true, false},
        {"fmtype=Screen", true, true}, {"fmtype=x", false, false},   {"", true, true},
    };
    for (const auto& [query, results, profiles] : rows) {
        CFileManCGI cgi;
        cgi.parseQueryInfo(query);
        _ResultFilter filter;
        filter.includeResults = filter.includeProfiles = true;
        cgi.getFilterFromRequest(filter);
        EXPECT_EQ(results, filter.includeResults) << query;
        EXPECT_EQ(profiles, filter.includeProfiles) << query;
    }
}

} // namespace
