#include "cgi/answer/ContentType.h"

#include <array>
#include <string>

#include "common/CCommUtils.h"

namespace {

struct Kind {
    std::string_view ending;
    std::string_view type;
};

// Types as IANA registers them; both formats of captures share one.
constexpr std::array<Kind, 14> kKinds = {{
    {".html", "text/html"},
    {".htm", "text/html"},
    {".png", "image/png"},
    {".jpg", "image/jpeg"},
    {".jpeg", "image/jpeg"},
    {".bmp", "image/bmp"},
    {".gif", "image/gif"},
    {".pcap", "application/vnd.tcpdump.pcap"},
    {".pcapng", "application/vnd.tcpdump.pcap"},
    {".pdf", "application/pdf"},
    {".xml", "application/xml"},
    {".csv", "text/csv"},
    {".txt", "text/plain"},
    {".zip", "application/zip"},
}};

} // namespace

std::string_view contentTypeOf(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    const std::string_view ending = dot == std::string_view::npos ? std::string_view() : path.substr(dot);
    for (const Kind& kind : kKinds) {
        if (CCommUtils::isEquals(ending, kind.ending))
            return kind.type;
    }
    return "application/octet-stream";
}
