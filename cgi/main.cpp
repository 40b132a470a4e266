// One process answers one request. The story of a request, and where it goes on:
//
//   Output          the response, which ends where writing it fails
//   StartUp         configuration and storage scan, in a thread that is waited for
//   Request         the query, what it asks for, the filter it names
//   pages/          HTML
//     ListPage        the grid page                  CFileManager loads what it lists
//     FilterPages     the two filter dialogs
//     CGICommonUtils  HTML lines, and the answer to every other request
//   delivery/       files instead of pages: View, Download, PdfExport
//     ChosenIds       which records
//     Obstacles       which of them no command can carry
//     StagedRecord    a record copied and compared
//     Packing         the archive
//     Converter       PDFs; PdfFiles: which of them are whole
//     Attachment      the answer; FileStream: a file's bytes
//     Termination     a server that ends the request before it has tidied up
//   staging/        the shared directories below /tmp
//     StagingArea     one of them; AreaLock, SignOfLife: whose turn it is
//     OwnPlace        names in /tmp that somebody else may have taken
//     CopiedTree      what was copied, and whether it is whole; PlainFiles: without links
//     Shell           commands, kept out of the response

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "cgi/CFileManCGI.h"
#include "cgi/Output.h"
#include "cgi/StartUp.h"
#include "cgi/pages/CGICommonUtils.h"
#include "common/CCommUtils.h"
#include "common/WriteAll.h"
#include "fileman/CFileManager.h"

namespace {

using ResultList = std::list<_ResultInfo*>;

// A file opened later would take the number of a closed descriptor, and receive the response or the log. What
// cannot be opened either (a root without devices) stands there in its place and refuses to be read or
// written.
void openStandardDescriptors() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(fd, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) < 0)
            ::open("/", O_PATH);
    }
}

// Half an answer would look whole, or take what is missing for absent.
[[noreturn]] void endWithoutMemory() {
    constexpr std::string_view kLine = "fileman: answer the request: out of memory\n";
    writeAll(STDERR_FILENO, kLine);
    ::_exit(EXIT_SUCCESS);
}

void prepareProcess() {
    openStandardDescriptors();
    std::set_new_handler(&endWithoutMemory);
    output::open();
#ifdef __GLIBC__
    // The start-up thread never runs beside another one; an arena of its own would only cost time.
    ::mallopt(M_ARENA_MAX, 1);
#endif
}

// The decoded query is needed as long as the process lives, so nobody frees it.
void readQuery(CFileManCGI& request) {
    const char* const variable = std::getenv("QUERY_STRING");
    const char* const query = variable == nullptr ? "" : variable;
    char* decoded = nullptr;
    if (CCommUtils::cgiUnescapeChars(&decoded, query, static_cast<int>(std::strlen(query))) != 0)
        endWithoutMemory();
    request.parseQueryInfo(decoded);
}

// A reader that has gone ends the commands of a delivery; the program itself finds out when it writes.
bool startsCommands(unsigned action) {
    return action == CFileManCGI::ACTION_PDF || action == CFileManCGI::ACTION_DOWNLOAD;
}

void answer(CFileManCGI& request, CFileManager& store, const _ResultFilter& filter, ResultList& results) {
    const unsigned action = request.getFileManType();
    if (!startsCommands(action))
        std::signal(SIGPIPE, SIG_IGN);
    switch (action) {
    case CFileManCGI::ACTION_LIST_ALL:
        store.loadAllResults();
        request.writeFileManPage(store);
        break;
    case CFileManCGI::ACTION_LIST_RESULTS:
    case CFileManCGI::ACTION_LIST_PROFILES:
        // The flags of the filter tell the one from the other.
        store.setFilter(filter);
        store.reloadResult();
        request.writeFileManPage(store);
        break;
    case CFileManCGI::ACTION_LIST_SCREENSHOTS:
        store.loadScreenShot();
        request.writeFileManPage(store);
        break;
    case CFileManCGI::ACTION_PRIMARY_FILTER:
        store.finishScan();
        request.writePriFilterPage();
        break;
    case CFileManCGI::ACTION_ADVANCED_FILTER:
        request.writeAdvFilterPage();
        break;
    case CFileManCGI::ACTION_VIEW:
        store.loadChosen(results, request.getChooser());
        request.viewResults(std::move(results));
        break;
    case CFileManCGI::ACTION_PDF:
        store.loadChosen(results, request.getChooser());
        request.convert2PDF(std::move(results));
        break;
    case CFileManCGI::ACTION_DOWNLOAD:
        store.loadChosen(results, request.getChooser());
        request.downloadResults(std::move(results));
        break;
    default:
        CGICommonUtils::writeRequestInfo();
        break;
    }
}

// Without giving back what the kernel takes at once: freeing 100,000 records would take longer than writing
// them.
[[noreturn]] void endProcess() {
    std::fflush(stdout);
    ::_exit(EXIT_SUCCESS);
}

} // namespace

int main() {
    prepareProcess();
    ResultList results;
    const auto store = std::make_unique<CFileManager>();
    store->deferScan();
    runStartUpThread();

    const auto request = std::make_unique<CFileManCGI>();
    readQuery(*request);
    _ResultFilter filter;
    request->getFilterFromRequest(filter);
    answer(*request, *store, filter, results);
    endProcess();
}
