#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

#include "cgi/CFileManCGI.h"
#include "cgi/delivery/Attachment.h"
#include "cgi/delivery/ChosenIds.h"
#include "cgi/delivery/Obstacles.h"
#include "cgi/delivery/OwnPlace.h"
#include "cgi/delivery/Packing.h"
#include "cgi/delivery/RemoveTree.h"
#include "cgi/delivery/StagingArea.h"
#include "cgi/delivery/Termination.h"
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

// Under another name first: at its place somebody could put a list of other files between two calls.
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

std::string pdfPath(const std::string& document) {
    return std::string(paths::kPdfDir) + "/" + CCommUtils::baseFileName(document) + ".pdf";
}

// In the child. The lock is closed on exec: a converter that stays behind must not hold up other requests. It
// ends with its request instead, so that it cannot put files among those of the next one.
[[noreturn]] void becomeConverter(pid_t parent) {
    std::string program = "htm2pdf";
    std::string taskList = paths::kPdfTaskList;
    std::array<char*, 3> arguments = {program.data(), taskList.data(), nullptr};
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() == parent)
        ::execvp(paths::kPdfConverter, arguments.data());
    ::_exit(0);
}

void runConverter() {
    std::fflush(stdout);
    const pid_t parent = ::getpid();
    const pid_t child = ::fork();
    if (child == 0)
        becomeConverter(parent);
    if (child < 0) {
        reportErrno("start", paths::kPdfConverter, errno);
        return;
    }
    TerminationDeferral::passOnTo(child);
    while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    TerminationDeferral::passOnTo(0);
}

// What is to be sent: the one PDF or the archive of several or none; "" when there is nothing to send.
std::string makePdfs(const StagingArea& area, const PathList& documents) {
    runConverter();
    if (documents.size() == 1)
        return pdfPath(documents.front());
    const std::string& archive = area.places().archive;
    const std::string command = "cd " + area.places().directory + " && zip " + archive + " *.pdf";
    return pack(area, command) ? archive : std::string();
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
void CFileManCGI::convert2PDF(std::list<_ResultInfo*> results) {
    const auto ids = ChosenIds::ofRequest(m_queryInfo);
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
    // The PDF of a record whose base name is empty: the '*' below does not match it.
    removeTree(pdfPath(""));
    area.cleanUp("rm -rf " + archive + " " + area.places().directory + "/* &");
}
