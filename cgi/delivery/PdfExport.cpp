#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "cgi/CFileManCGI.h"
#include "cgi/delivery/Delivery.h"
#include "cgi/delivery/Selection.h"
#include "cgi/delivery/StagingArea.h"
#include "cgi/delivery/Termination.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/Report.h"
#include "common/UniqueFd.h"
#include "common/WriteAll.h"

namespace {

using PathList = std::list<std::string>;

PathList pathsToConvert(const std::list<const _ResultInfo*>& records) {
    PathList paths;
    for (const _ResultInfo* const record : records) {
        if (const char* const obstacle = pdfObstacle(record->path))
            delivery::reportLeftOut("export to PDF", *record, obstacle);
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

// A new file each time: an old one may be a link or a FIFO that somebody put there.
UniqueFd createTaskList() {
    constexpr mode_t kMode = 0644;
    ::unlink(paths::kPdfTaskList);
    return UniqueFd(::open(paths::kPdfTaskList, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kMode));
}

void writeTaskList(const PathList& paths) {
    UniqueFd file = createTaskList();
    if (!file || !writeAll(file.get(), taskLines(paths)) || file.reset() != 0)
        reportErrno("write task list", paths::kPdfTaskList, errno);
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

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
void CFileManCGI::convert2PDF(std::list<_ResultInfo*> results) {
    const auto ids = RecordIds::ofRequest(m_queryInfo);
    if (!ids)
        return;
    const std::list<const _ResultInfo*> chosen = ids->choose(results);
    const PathList documents = pathsToConvert(chosen);
    const std::string archive = paths::kPdfArchive;
    const TerminationDeferral deferral;
    const StagingArea area({paths::kPdfDir, archive, paths::kPdfLock});
    if (!chosen.empty())
        area.removeLeftovers();
    writeTaskList(documents);
    runConverter();
    if (documents.size() == 1) {
        downloadFile("/tmp/pdf/" + CCommUtils::baseFileName(documents.front()) + ".pdf");
    } else {
        area.run("cd /tmp/pdf && zip " + archive + " *.pdf");
        downloadFile(archive);
    }
    delivery::waitBeforeCleanUp();
    // The PDF of a record whose base name is empty: the '*' below does not match it.
    ::unlink("/tmp/pdf/.pdf");
    area.run("rm -rf " + archive + " /tmp/pdf/* &");
}
