#include "cgi/answer/HttpErrors.h"

#include <cstdio>

#include "cgi/answer/Escape.h"

namespace {

constexpr std::string_view kSubjectPlace = "{}";

} // namespace

void refuse(const Refusal& refusal, std::string_view subject) {
    std::string sentence(refusal.sentence);
    if (const std::size_t place = sentence.find(kSubjectPlace); place != std::string::npos)
        sentence.replace(place, kSubjectPlace.size(), subject);
    const std::string body =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n\t<meta charset=\"utf-8\" />\n"
        "\t<title>Result file manager</title>\n"
        "\t<meta name=\"fileman-answers\" content=\"strict\" />\n</head>\n<body>\n\t<p>" +
        escape::forHtml(sentence) + "</p>\n</body>\n</html>\n";
    Header header(refusal.status, Header::Policy::File, kHtmlType);
    header.addLength(static_cast<long long>(body.size()));
    if (refusal.status == Status::MethodNotAllowed)
        header.add("Allow", "GET, HEAD");
    // A delivery that others wait for takes some seconds.
    if (refusal.status == Status::Busy)
        header.add("Retry-After", "30");
    header.write();
    std::fputs(body.c_str(), stdout);
}
