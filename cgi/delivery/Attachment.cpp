#include "cgi/delivery/Attachment.h"

#include <cstdio>

#include "cgi/CFileManCGI.h"
#include "cgi/answer/Answers.h"
#include "cgi/answer/ContentType.h"
#include "cgi/answer/Disposition.h"
#include "cgi/answer/Header.h"
#include "cgi/delivery/FileStream.h"
#include "common/CCommUtils.h"
#include "common/ControlBytes.h"
#include "common/FixedPaths.h"

namespace {

// Control bytes are removed from the name, because a line feed in it would begin a new header line.
void writeHeader(const std::string& path, long long size) {
    if (Answers::current().areStrict()) {
        writeAttachmentHeader(CCommUtils::completeFileName(path), size);
        return;
    }
    std::printf("Content-Disposition:attachment;filename=%s\r\n",
                withoutControlBytes(CCommUtils::completeFileName(path)).c_str());
    std::printf("Content-Length:%lld\r\n", size);
    std::printf("Content-Type:application/octet-stream\r\n");
    std::printf("\r\n");
}

void send(const std::string& path, FileStream::From from) {
    const IgnoreBrokenPipe ignoreBrokenPipe;
    FileStream file(path, from);
    writeHeader(path, file.size());
    file.send();
}

} // namespace

void sendAttachment(const std::string& path) {
    send(path, FileStream::From::Staging);
}

void sendEmptyAttachment(const std::string& path) {
    const IgnoreBrokenPipe ignoreBrokenPipe;
    writeHeader(path, 0);
    std::fflush(stdout);
}

void writeAttachmentHeader(const std::string& fileName, std::optional<long long> size) {
    Header header(Status::Ok, Header::Policy::File, contentTypeOf(fileName));
    if (size)
        header.addLength(*size);
    header.add("Content-Disposition", attachmentDisposition(fileName)).write();
}

int CFileManCGI::downloadFile(const std::string& path) {
    const bool isStaged = CCommUtils::isStartsWith(path, paths::kStagingRoot);
    send(path, isStaged ? FileStream::From::Staging : FileStream::From::Storage);
    return 1;
}
