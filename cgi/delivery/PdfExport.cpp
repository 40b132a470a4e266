#include <unistd.h>

#include "cgi/CFileManCGI.h"
#include "cgi/delivery/Attachment.h"
#include "cgi/delivery/ChosenIds.h"
#include "cgi/delivery/Converter.h"
#include "cgi/delivery/Obstacles.h"
#include "cgi/delivery/Packing.h"
#include "cgi/delivery/PdfFiles.h"
#include "cgi/delivery/Termination.h"
#include "cgi/staging/OwnPlace.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/StagingArea.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "common/WriteAll.h"

namespace {

using PathList = std::list<std::string>;

PathList pathsToConvert(const std::list<const _ResultInfo*>& records) {
    PathList paths;
    for (const _ResultInfo* const record : records) {
        if (const char* const obstacle = pdfObstacle(record->path))
            reportLeftOut("export to PDF", record->path, obstacle);
        else
            paths.push_back(record->path);
    }
    return paths;
}

std::string taskLines(const PathList& paths) {
    std::string lines;
    for (const std::string& path : paths)
        lines.append(path).append(" -> ").append(CCommUtils::baseFileName(path)).append(".pdf\n");
    return lines;
}

// Writes the list under another name and renames it: at the final path, another user could put a list of
// other files between two calls.
bool writeTaskList(const PathList& paths) {
    constexpr mode_t kMode = 0644;
    UniqueFd file = createOwnFile(paths::kNewPdfTaskList, kMode);
    if (!file)
        return false;
    if (writeAll(file.get(), taskLines(paths)) && file.reset() == 0)
        return moveOver(paths::kNewPdfTaskList, paths::kPdfTaskList);
    reportErrno("write task list", paths::kPdfTaskList, errno);
    ::unlink(paths::kNewPdfTaskList);
    return false;
}

// Returns the path of the file to send: the PDF of one document, or the archive of several or none. Returns
// "" when there is no whole file to send.
std::string makePdfs(const StagingArea& area, const PathList& documents) {
    const bool hasSucceeded = converter::run();
    if (documents.size() == 1) {
        const std::string pdf = pdfPath(documents.front());
        const char* const obstacle = pdfFileObstacle(pdf, hasSucceeded);
        if (obstacle != nullptr)
            reportLeftOut("export to PDF", pdf, obstacle);
        return obstacle == nullptr ? pdf : std::string();
    }
    const std::string& archive = area.places().archive;
    const std::string command = "cd " + area.places().directory + " && zip " + archive + " *.pdf";
    return keepWholePdfs(documents, hasSucceeded) && pack(area, command) ? archive : std::string();
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given interface takes a copy
void CFileManCGI::convert2PDF(std::list<_ResultInfo*> results) {
    const auto ids = ChosenIds::of(getQueryList("rsltid"));
    if (!ids)
        return;
    const std::list<const _ResultInfo*> chosen = ids->choose(results);
    const PathList documents = pathsToConvert(chosen);
    const StagingArea area({paths::kPdfDir, paths::kPdfArchive, paths::kPdfLock});
    if (area.isAbandoned())
        return;
    const TerminationDeferral deferral;
    const std::string& archive = area.places().archive;
    const bool isReady =
        area.isUsable() && (chosen.empty() || area.removeLeftovers()) && writeTaskList(documents);
    const std::string made = isReady ? makePdfs(area, documents) : std::string();
    if (made.empty())
        sendEmptyAttachment(documents.size() == 1 ? pdfPath(documents.front()) : archive);
    else
        sendAttachment(made);
    // A record with an empty base name has the PDF ".pdf", which the '*' below does not match.
    removeTree(pdfPath(""));
    area.cleanUp("rm -rf " + archive + " " + area.places().directory + "/* &");
}
