#include "cgi/answer/Header.h"

#include <cstdio>

#include "cgi/answer/Answers.h"
#include "cgi/answer/Output.h"
#include "fileman/CFileManager.h"

namespace {

// The scripts set styles by properties only.
constexpr std::string_view kPagePolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
    "img-src 'self' blob: data:; frame-src 'self' blob:; form-action 'self'; base-uri 'none'; "
    "frame-ancestors 'self'";
// A stored file: nothing runs, nothing loads, no origin.
constexpr std::string_view kFilePolicy =
    "sandbox; default-src 'none'; img-src 'self' data:; style-src 'unsafe-inline'; frame-ancestors 'self'; "
    "base-uri 'none'; form-action 'none'";

std::string_view statusLine(Status status) {
    switch (status) {
    case Status::Ok:
        return "";
    case Status::BadRequest:
        return "Status: 400 Bad Request\r\n";
    case Status::NotFound:
        return "Status: 404 Not Found\r\n";
    case Status::MethodNotAllowed:
        return "Status: 405 Method Not Allowed\r\n";
    case Status::Failed:
        return "Status: 500 Internal Server Error\r\n";
    case Status::Busy:
        return "Status: 503 Service Unavailable\r\n";
    }
    return "";
}

} // namespace

Header::Header(Status status, Policy policy, std::string_view contentType)
    : m_lines(statusLine(status)), m_policy(policy) {
    add("Content-Type", contentType);
}

Header& Header::add(std::string_view name, std::string_view value) {
    m_lines.append(name).append(": ").append(value).append("\r\n");
    return *this;
}

Header& Header::addLength(long long size) {
    return add("Content-Length", std::to_string(size));
}

void Header::write() const {
    Header whole = *this;
    whole.add("Content-Security-Policy", m_policy == Policy::Page ? kPagePolicy : kFilePolicy)
        .add("X-Content-Type-Options", "nosniff")
        .add("Cache-Control", "no-store")
        .add("Referrer-Policy", "same-origin")
        .add("Cross-Origin-Resource-Policy", "same-origin")
        .add("Cross-Origin-Opener-Policy", "same-origin");
    if (const std::size_t places = unreadPlaces(); places > 0)
        whole.add("X-Fileman-Incomplete", std::to_string(places));
    std::printf("%s\r\n", whole.m_lines.c_str());
    if (!Answers::current().areHeaderOnly())
        return;
    std::fflush(stdout);
    output::stop();
}

// The default header is fixed, line ends included.
void writePageHeader() {
    if (Answers::current().areStrict())
        Header(Status::Ok, Header::Policy::Page, kHtmlType).write();
    else
        std::puts("Content-type:text/html;charset=utf-8\n");
}

std::size_t unreadPlaces() {
    return g_FileMan == nullptr ? 0 : g_FileMan->unreadPlaces();
}
