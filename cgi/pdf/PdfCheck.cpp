#include "cgi/pdf/PdfCheck.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <map>
#include <string_view>

#include "cgi/delivery/UnsafeNames.h"
#include "cgi/pdf/PdfNames.h"
#include "cgi/staging/OwnPlace.h"
#include "cgi/staging/RemoveTree.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "fileman/disk/Directory.h"

namespace {

constexpr char kDelivery[] = "export to PDF";
constexpr std::string_view kPdfBegin = "%PDF-";
constexpr std::string_view kPdfEnd = "%%EOF";
// PDF readers look for the end mark in this many last bytes.
constexpr off_t kTail = 1024;

// Returns up to kTail bytes from the offset on.
std::string readAt(const UniqueFd& file, off_t offset) {
    std::array<char, kTail> bytes;
    const ssize_t count = ::pread(file.get(), bytes.data(), bytes.size(), offset);
    return count > 0 ? std::string(bytes.data(), static_cast<std::size_t>(count)) : std::string();
}

bool endsWith(std::string_view name, std::string_view end) {
    return name.size() >= end.size() && name.substr(name.size() - end.size()) == end;
}

// Reports three reasons why a document has no PDF in the archive: it shares one file with another document of
// the same base name, its PDF begins with a dot (the packer does not match it), or it was not made at all.
void reportMissing(const std::list<std::string>& documents) {
    std::map<std::string, std::string> documentOf;
    for (const std::string& document : documents) {
        const std::string pdf = pdfPath(document);
        const auto [place, isNew] = documentOf.try_emplace(pdf, document);
        if (!isNew && place->second == document)
            continue;
        if (!isNew)
            report(kDelivery, place->second + " and " + document, "one PDF for both");
        else if (CCommUtils::baseFileName(document).empty())
            reportLeftOut(kDelivery, document, "its name is empty");
        else if (::access(pdf.c_str(), F_OK) != 0)
            reportLeftOut(kDelivery, document, "there is no whole PDF of it");
    }
}

} // namespace

const char* pdfFileObstacle(const std::string& path, bool hasConverterSucceeded) {
    const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status = {};
    if (!file || ::fstat(file.get(), &status) != 0)
        return errno == ENOENT ? "it was not made" : "it cannot be opened";
    if (!isOwnFile(status))
        return "not this program's own file";
    if (hasConverterSucceeded && readAt(file, 0).compare(0, kPdfBegin.size(), kPdfBegin) != 0)
        return nullptr;
    const std::string tail = readAt(file, std::max<off_t>(0, status.st_size - kTail));
    return tail.find(kPdfEnd) == std::string::npos ? "it is not whole" : nullptr;
}

bool keepWholePdfs(const std::list<std::string>& documents, bool hasConverterSucceeded) {
    const auto directory = readWholeDirectory(paths::kPdfDir);
    bool areWhole = directory.has_value();
    if (directory) {
        for (const DirEntry entry : *directory) {
            const std::string path = entryPath(paths::kPdfDir, entry.name);
            const char* const obstacle =
                endsWith(entry.name, kPdfSuffix) ? pdfFileObstacle(path, hasConverterSucceeded) : nullptr;
            if (obstacle == nullptr)
                continue;
            reportLeftOut(kDelivery, path, obstacle);
            areWhole = removeTree(path) && areWhole;
        }
    }
    reportMissing(documents);
    return areWhole;
}
