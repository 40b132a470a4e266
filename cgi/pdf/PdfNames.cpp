#include "cgi/pdf/PdfNames.h"

#include "cgi/answer/Answers.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"

std::string pdfPath(const std::string& document) {
    return std::string(paths::kPdfDir) + "/" + CCommUtils::baseFileName(document) + std::string(kPdfSuffix);
}

std::string pdfPathAmong(const std::string& document, EntryNames& names) {
    std::string path = pdfPath(document);
    if (!Answers::current().areStrict())
        return path;
    const std::string name = names.take("", CCommUtils::dirName(path), EntryNames::Kind::File);
    return CCommUtils::absFilePath(path) + "/" + name;
}
