// Tests the query of a request: it is percent-decoded, split into pairs, classified and made into a filter.

#include <memory>
#include <set>

#include "FuzzInput.h"
#include "cgi/CFileManCGI.h"
#include "cgi/answer/Escape.h"
#include "common/CCommUtils.h"

namespace {

using QueryMap = std::map<std::string, std::string>;

// The buffer has exactly this size, because the decoder must not read after its end.
std::string decoded(const std::string& query) {
    const std::unique_ptr<char[]> bytes(new char[query.size()]);
    query.copy(bytes.get(), query.size());
    char* out = nullptr;
    require(CCommUtils::cgiUnescapeChars(&out, bytes.get(), static_cast<int>(query.size())) == 0, "decoded");
    const std::unique_ptr<char, void (*)(void*)> owner(out, &std::free);
    return out;
}

void checkPairs(const QueryMap& pairs, const std::string& text) {
    for (const auto& [key, value] : pairs) {
        require(("&" + text + "&").find("&" + key + "=" + value + "&") != std::string::npos,
                "a pair stands in the query");
        require(key.find('=') == std::string::npos, "the first '=' ends the key");
    }
    QueryMap again;
    CCommUtils::parseQueryInfo(again, ("&" + text + "&" + text).c_str());
    require(again == pairs, "the first value of a key stays");
}

void checkFilter(CFileManCGI& request) {
    static const std::set<unsigned> kActions = {1, 2, 3, 4, 5, 6, 7, 8, 9, 11};
    require(kActions.count(request.getFileManType()) == 1, "an action that exists");
    _ResultFilter filter;
    request.getFilterFromRequest(filter);
    require(request.m_filter.tests == filter.tests && request.m_filter.ports == filter.ports &&
                request.m_filter.advanceInfo.suffix == filter.advanceInfo.suffix,
            "the request keeps the filter");
    require(!request.getChooser()("") || request.m_queryInfo.count("rsltid") == 1, "nothing chosen unasked");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string query(data, data + size);
    const std::string text = decoded(query);
    require(text.size() <= query.size(), "decoding never grows");
    require(decoded(escape::percentEncoded(text, "")) == text, "what is encoded comes back");
    CFileManCGI request;
    request.parseQueryInfo(text.c_str());
    checkPairs(request.m_queryInfo, text);
    checkFilter(request);
    CFileManCGI strict;
    require(strict.readQuery(escape::percentEncoded(text, "&=,").c_str()) &&
                strict.m_queryInfo == request.m_queryInfo,
            "both kinds of answers read a query alike");
    return 0;
}
