#include <cstdio>

#include "cgi/CFileManCGI.h"
#include "cgi/answer/Answers.h"
#include "cgi/answer/ContentType.h"
#include "cgi/answer/Disposition.h"
#include "cgi/answer/HttpErrors.h"
#include "cgi/delivery/ChosenIds.h"
#include "cgi/delivery/FileStream.h"
#include "common/CCommUtils.h"

namespace {

// The content type never depends on the file. The two line feeds after it already end the header, so
// "\r\n\r\n" comes before the body and Content-Length does not count it. This is intentional: the browser
// side allows for these four bytes.
void sendInline(const std::string& path) {
    FileStream file(path, FileStream::From::Storage);
    std::printf("Content-Length:%lld\r\n", file.size());
    std::puts("Content-Type:text/html;charset=utf-8\n\n\r");
    std::fputs("\r\n", stdout);
    file.send();
}

// Sends exactly the bytes of the file.
void sendExactly(const std::string& path) {
    FileStream file(path, FileStream::From::Storage);
    if (!file.isOpen()) {
        if (file.isMissing())
            refuse(refusal::kFileGone);
        else
            refuse(refusal::kFileUnreadable);
        return;
    }
    Header(Status::Ok, Header::Policy::File, contentTypeOf(path))
        .addLength(file.size())
        .add("Content-Disposition", inlineDisposition(CCommUtils::completeFileName(path)))
        .write();
    file.send();
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given interface takes a copy
void CFileManCGI::viewResults(std::list<_ResultInfo*> results) {
    const auto ids = ChosenIds::of(getQueryList("rsltid"));
    if (!ids)
        return;
    std::list<std::string> paths;
    for (const _ResultInfo* const record : results) {
        if (!ids->contains(record->id))
            continue;
        paths.push_back(record->path);
        break;
    }
    viewFiles(paths);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given interface takes a copy
void CFileManCGI::viewFiles(std::list<std::string> paths) {
    for (const std::string& path : paths) {
        if (Answers::current().areStrict())
            sendExactly(path);
        else
            sendInline(path);
    }
}
