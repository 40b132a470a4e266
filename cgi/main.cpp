// One process answers one request. The steps of a request, and the files that implement them:
//
//   CommandLine     answers --version for a person at a terminal
//   answer/         how an answer is written
//     Answers         decides which kind of answers this process gives, and what differs between the two
//     Output          writes the response, which ends where a write fails
//     Header          writes the header of strict answers; HttpErrors: what they refuse, and in which words;
//                     ContentType, Disposition: lines of the header; Escape: values in pages
//   confine/        limits what the process may do from here on: Reach (files), Limits, Privileges,
//                   Environment (what commands inherit);
//                   Landlock and Programs make the rules for the kernel
//   StartUp         reads the configuration and scans the storage, in a thread that main waits for
//   Request         reads the query: the action and the filter; StrictQuery: the way strict answers read it
//   pages/          writes HTML
//     ListPage        the grid page                  CFileManager loads what it lists
//     CsvAndJsonList  the same rows as CSV or JSON Lines; RowFormat: rows of the page; RowWriter: all rows
//     FilterPages     the two filter dialogs
//     RequestInfoPage the answer to every other request
//     CGICommonUtils  HTML lines; PageHead, PageFrame: the top and the foot of a page;
//                     IncompleteNotice: the message of a page that lacks entries
//   delivery/       sends files instead of pages: View, Download
//     ChosenIds       which records the request chose
//     UnsafeNames     which of them cannot be written into the shell commands
//     StagedRecord    copies a record and compares the copy
//     Packing         makes the archive
//     Attachment      sends the answer; FileStream: the bytes of a file
//     Termination     lets the clean-up finish when the server ends the request early
//   pdf/            makes PDFs of reports and sends them: PdfExport
//     Converter       runs the converter; TaskList: for which documents; PdfNames: the names of PDFs;
//                     PdfCheck: which PDFs are whole
//   StagingPlaces   where downloads and PDFs are collected
//   archive/        writes archives of strict answers straight to the response
//     StreamedDownload  what goes in, and what is missing; RecordFiles: the files of a record
//     ArchiveStream     the archive; EntryNames: the names in it; PackedEndings: what is compressed already
//   staging/        the shared directories below /tmp
//     StagingArea     one of them; AreaLock, SignOfLife: whose turn it is
//     TmpKeeper       the process that may write directly in /tmp; PassedFd: how it passes files on
//     OwnPlace        names in /tmp that another user may have taken
//     CopiedTree      makes copies and checks that they are whole; CopiedLinks: replaces links
//     Shell           runs commands and keeps their output out of the response

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
#include "cgi/CommandLine.h"
#include "cgi/StartUp.h"
#include "cgi/answer/Answers.h"
#include "cgi/answer/HttpErrors.h"
#include "cgi/answer/Output.h"
#include "cgi/confine/Environment.h"
#include "cgi/confine/Limits.h"
#include "cgi/confine/Privileges.h"
#include "cgi/confine/Reach.h"
#include "cgi/pages/CGICommonUtils.h"
#include "cgi/staging/StagingArea.h"
#include "common/CCommUtils.h"
#include "common/WriteAll.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/load/LoadTrace.h"

namespace {

using Names = std::list<std::string>;
using ResultList = std::list<_ResultInfo*>;

bool isDelivery(unsigned action) {
    return action == CFileManCGI::ACTION_VIEW || action == CFileManCGI::ACTION_PDF ||
           action == CFileManCGI::ACTION_DOWNLOAD;
}

bool isFilteredList(unsigned action) {
    return action == CFileManCGI::ACTION_LIST_RESULTS || action == CFileManCGI::ACTION_LIST_PROFILES;
}

bool isList(unsigned action) {
    return isFilteredList(action) || action == CFileManCGI::ACTION_LIST_ALL ||
           action == CFileManCGI::ACTION_LIST_SCREENSHOTS;
}

// If a standard descriptor is closed, a file opened later would get its number, and the response or the log
// would be written into that file. Where /dev/null cannot be opened (a root without devices), an O_PATH
// descriptor takes the number; it can be neither read nor written.
void openStandardDescriptors() {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(fd, F_GETFD) < 0 && ::open("/dev/null", O_RDWR) < 0)
            ::open("/", O_PATH);
    }
}

// Ends the process at once: an answer that went on without memory would look whole although records are
// missing.
[[noreturn]] void endWithoutMemory() {
    constexpr std::string_view kLine = "fileman: answer the request: out of memory\n";
    writeAll(STDERR_FILENO, kLine);
    ::_exit(EXIT_SUCCESS);
}

void prepareProcess() {
    openStandardDescriptors();
    Answers::decide();
    if (Answers::current().areStrict())
        trace::sendToStandardError();
    std::set_new_handler(&endWithoutMemory);
    output::open();
#ifdef __GLIBC__
    // The start-up thread never runs at the same time as another one; its own malloc arena would only cost
    // time.
    ::mallopt(M_ARENA_MAX, 1);
#endif
}

// Returns false when a strict answer cannot take the query. The default answers take every query.
bool readQuery(CFileManCGI& request) {
    const char* const variable = std::getenv("QUERY_STRING");
    const char* const query = variable == nullptr ? "" : variable;
    if (Answers::current().areStrict())
        return request.readQuery(query);
    // The decoded query is never freed: the process needs it until it ends.
    char* decoded = nullptr;
    if (CCommUtils::cgiUnescapeChars(&decoded, query, static_cast<int>(std::strlen(query))) != 0)
        endWithoutMemory();
    request.parseQueryInfo(decoded);
    return true;
}

// What a strict answer refuses before anything is loaded. In default answers a delivery without ids is empty,
// and a module that the configuration lacks ends the process.
bool refuses(const CFileManCGI& request, const _ResultFilter& filter) {
    if (!Answers::current().areStrict())
        return false;
    const unsigned action = request.getFileManType();
    if (isDelivery(action) && request.getQueryList("rsltid").value_or(Names()).empty()) {
        refuse(refusal::kNoId);
        return true;
    }
    if (isList(action) && !request.getListFormat()) {
        refuse(refusal::kFormat);
        return true;
    }
    if (!isFilteredList(action))
        return false;
    for (const std::string& module : filter.modules) {
        if (CFileManConf::hasModule(module))
            continue;
        refuse(refusal::kModule, module);
        return true;
    }
    return false;
}

// These two start commands, which would inherit an ignored SIGPIPE and go on after their reader is gone. The
// program itself needs no signal: it sees the failed write.
bool startsCommands(unsigned action) {
    return action == CFileManCGI::ACTION_PDF ||
           (action == CFileManCGI::ACTION_DOWNLOAD && !Answers::current().areStrict());
}

// The area is made ready first: afterwards the request can write below the directory of the area only.
void confineDelivery(CFileManCGI& request, CFileManCGI::ActionType action) {
    environment::clean();
    const StagingArea& area = request.stagingArea(action);
    reach::confineToStaging(action == CFileManCGI::ACTION_PDF ? reach::Delivery::Pdf
                                                              : reach::Delivery::Download,
                            area.isOwn() ? area.places().directory : "");
}

// Before anything is read from storage. A request that cannot drop the rights of another user must not go on.
void confine(CFileManCGI& request) {
    limits::apply();
    if (!privileges::drop())
        ::_exit(EXIT_FAILURE);
    const unsigned action = request.getFileManType();
    if (startsCommands(action) && request.getQueryList("rsltid")) {
        confineDelivery(request, action == CFileManCGI::ACTION_PDF ? CFileManCGI::ACTION_PDF
                                                                   : CFileManCGI::ACTION_DOWNLOAD);
    } else if (action == CFileManCGI::ACTION_DOWNLOAD) {
        reach::confineToStreaming();
    } else {
        reach::confineToReading();
    }
}

// Answers a request for records that do not exist, when answers are strict.
bool refusesUnknown(const ResultList& results) {
    if (!Answers::current().areStrict() || !results.empty())
        return false;
    refuse(refusal::kUnknownIds);
    return true;
}

void deliver(CFileManCGI& request, CFileManager& store) {
    ResultList results;
    store.loadChosen(results, request.getChooser());
    if (refusesUnknown(results))
        return;
    switch (request.getFileManType()) {
    case CFileManCGI::ACTION_VIEW:
        request.viewResults(std::move(results));
        break;
    case CFileManCGI::ACTION_PDF:
        request.convert2PDF(std::move(results));
        break;
    default:
        request.downloadResults(std::move(results));
        break;
    }
}

void answer(CFileManCGI& request, CFileManager& store, const _ResultFilter& filter) {
    const unsigned action = request.getFileManType();
    if (!startsCommands(action))
        std::signal(SIGPIPE, SIG_IGN);
    switch (action) {
    case CFileManCGI::ACTION_LIST_ALL:
        store.loadAllResults();
        request.writeList(store);
        break;
    case CFileManCGI::ACTION_LIST_RESULTS:
    case CFileManCGI::ACTION_LIST_PROFILES:
        // The flags includeResults and includeProfiles of the filter make the difference.
        store.setFilter(filter);
        store.reloadResult();
        request.writeList(store);
        break;
    case CFileManCGI::ACTION_LIST_SCREENSHOTS:
        store.loadScreenShot();
        request.writeList(store);
        break;
    case CFileManCGI::ACTION_PRIMARY_FILTER:
        store.finishScan();
        request.writePriFilterPage();
        break;
    case CFileManCGI::ACTION_ADVANCED_FILTER:
        request.writeAdvFilterPage();
        break;
    case CFileManCGI::ACTION_VIEW:
    case CFileManCGI::ACTION_PDF:
    case CFileManCGI::ACTION_DOWNLOAD:
        deliver(request, store);
        break;
    default:
        CGICommonUtils::writeRequestInfo();
        break;
    }
}

// Ends without freeing the records: freeing 100,000 of them would take longer than writing them, and the
// kernel takes all memory back at once.
[[noreturn]] void endProcess() {
    trace::flush();
    std::fflush(stdout);
    ::_exit(EXIT_SUCCESS);
}

// Reads the configuration, writes the whole answer and ends the process while the store still exists.
[[noreturn]] void serve(CFileManCGI& request) {
    const auto store = std::make_unique<CFileManager>();
    store->deferScan();
    runStartUpThread();

    _ResultFilter filter;
    request.getFilterFromRequest(filter);
    if (!refuses(request, filter))
        answer(request, *store, filter);
    endProcess();
}

} // namespace

int main(int argc, char** argv) {
    prepareProcess();
    if (asksForVersion(argc, argv)) {
        writeVersion();
        endProcess();
    }
    const auto request = std::make_unique<CFileManCGI>();
    if (Answers::current().isMethodRefused()) {
        refuse(refusal::kMethod);
    } else if (!readQuery(*request)) {
        refuse(refusal::kEscape);
    } else {
        confine(*request);
        serve(*request);
    }
    endProcess();
}
