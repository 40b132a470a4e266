#include "cgi/answer/HttpErrors.h"

#include <cstdio>

#include "cgi/answer/Escape.h"

void writeErrorPage(Status status, const std::string& sentence) {
    const std::string body =
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n\t<meta charset=\"utf-8\" />\n"
        "\t<title>Result file manager</title>\n"
        "\t<meta name=\"fileman-answers\" content=\"strict\" />\n</head>\n<body>\n\t<p>" +
        escape::forHtml(sentence) + "</p>\n</body>\n</html>\n";
    Header header(status, Header::Policy::File, kHtmlType);
    header.addLength(static_cast<long long>(body.size()));
    if (status == Status::MethodNotAllowed)
        header.add("Allow", "GET, HEAD");
    // A delivery that others wait for takes some seconds.
    if (status == Status::Busy)
        header.add("Retry-After", "30");
    header.write();
    std::fputs(body.c_str(), stdout);
}
