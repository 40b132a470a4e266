#include <ctime>

#include "cgi/CFileManCGI.h"
#include "cgi/answer/Answers.h"
#include "cgi/answer/HttpErrors.h"
#include "cgi/archive/ArchiveStream.h"
#include "cgi/delivery/Attachment.h"
#include "cgi/delivery/ChosenIds.h"
#include "cgi/delivery/FileStream.h"
#include "cgi/delivery/Packing.h"
#include "cgi/delivery/Termination.h"
#include "cgi/delivery/UnsafeNames.h"
#include "cgi/pdf/Converter.h"
#include "cgi/pdf/PdfCheck.h"
#include "cgi/pdf/PdfNames.h"
#include "cgi/pdf/TaskList.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/StagingArea.h"
#include "common/CCommUtils.h"
#include "common/Report.h"

namespace {

// Returns the path of the file to send: the PDF of one document, or the archive of several or none. Returns
// "" when there is no whole file to send.
std::string makePdfs(const StagingArea& area, const TaskList& tasks) {
    const bool hasSucceeded = converter::run();
    if (tasks.size() == 1) {
        const std::string& pdf = tasks.front().pdf;
        const char* const obstacle = pdfFileObstacle(pdf, hasSucceeded);
        if (obstacle != nullptr)
            reportLeftOut("export to PDF", pdf, obstacle);
        return obstacle == nullptr ? pdf : std::string();
    }
    const std::string& archive = area.places().archive;
    const std::string command = "cd " + area.places().directory + " && zip " + archive + " *.pdf";
    return keepWholePdfs(documentsOf(tasks), hasSucceeded) && pack(area, command) ? archive : std::string();
}

void sendDefaultAnswer(const StagingArea& area, const TaskList& tasks, bool isReady) {
    const std::string made = isReady ? makePdfs(area, tasks) : std::string();
    if (made.empty())
        sendEmptyAttachment(tasks.size() == 1 ? tasks.front().pdf : area.places().archive);
    else
        sendAttachment(made);
}

void writeArchiveHeader() {
    writeAttachmentHeader("fileman_pdf.zip");
}

// Breaks off, so that the answer cannot pass for a whole one, when a PDF cannot be read.
void streamPdfs(const TaskList& tasks) {
    const IgnoreBrokenPipe ignoreBrokenPipe;
    ArchiveStream archive(&writeArchiveHeader);
    for (const PdfTask& task : tasks) {
        const FileStream file(task.pdf, FileStream::From::Staging);
        archive.addFile(CCommUtils::dirName(task.pdf), file.descriptor(), file.size(), std::time(nullptr));
    }
    archive.finish();
}

// Describes each document of which the converter made no whole PDF; "" when there is none.
std::string missingPdfs(const TaskList& tasks) {
    std::string missing;
    for (const PdfTask& task : tasks) {
        // The converter's word is not enough here: the file must end as a PDF does.
        if (const char* const obstacle = pdfFileObstacle(task.pdf, false)) {
            reportLeftOut("export to PDF", task.pdf, obstacle);
            missing.append(missing.empty() ? "" : ", ")
                .append(task.document)
                .append(" (")
                .append(obstacle)
                .append(")");
        }
    }
    return missing;
}

void sendStrictAnswer(const StagingArea& area, const TaskList& tasks, bool isReady) {
    if (!area.isHeld()) {
        refuse(refusal::kPdfBusy);
        return;
    }
    if (!isReady) {
        refuse(refusal::kPdfUnusable);
        return;
    }
    converter::run();
    const std::string missing = missingPdfs(tasks);
    if (!missing.empty())
        refuse(refusal::kPdfMissing, missing);
    else if (tasks.size() == 1)
        sendAttachment(tasks.front().pdf);
    else
        streamPdfs(tasks);
}

// Returns why the converter cannot take one of the records, or "" when it can take all.
std::string obstacleOf(const std::list<const _ResultInfo*>& records) {
    for (const _ResultInfo* const record : records) {
        if (const char* const obstacle = pdfObstacle(record->path))
            return record->path + ", because " + obstacle;
    }
    return "";
}

// Answers a strict request that needs no converter: one that asks for the header alone, or for a PDF of a
// record that does not exist or that the converter's task list cannot carry.
bool isAnsweredBefore(const ChosenIds& ids, const std::list<const _ResultInfo*>& chosen,
                      const TaskList& tasks) {
    if (!Answers::current().areStrict())
        return false;
    if (const std::list<std::string> unknown = ids.unknown(chosen); !unknown.empty())
        refuse(refusal::kUnknownId, unknown.front());
    else if (const std::string obstacle = obstacleOf(chosen); !obstacle.empty())
        refuse(refusal::kPdfObstacle, obstacle);
    else if (!Answers::current().areHeaderOnly())
        return false;
    else if (tasks.size() == 1)
        writeAttachmentHeader(CCommUtils::dirName(tasks.front().pdf));
    else
        writeArchiveHeader();
    return true;
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given interface takes a copy
void CFileManCGI::convert2PDF(std::list<_ResultInfo*> results) {
    const auto ids = ChosenIds::of(getQueryList("rsltid"));
    if (!ids)
        return;
    const std::list<const _ResultInfo*> chosen = ids->choose(results);
    const TaskList tasks = tasksOf(chosen);
    if (isAnsweredBefore(*ids, chosen, tasks))
        return;
    StagingArea& area = stagingArea(ACTION_PDF);
    area.takeTurn();
    if (area.isAbandoned())
        return;
    const TerminationDeferral deferral;
    const bool isReady =
        area.isUsable() && (chosen.empty() || area.removeLeftovers()) && area.writeTaskList(textOf(tasks));
    if (Answers::current().areStrict())
        sendStrictAnswer(area, tasks, isReady);
    else
        sendDefaultAnswer(area, tasks, isReady);
    // A record with an empty base name has the PDF ".pdf", which the '*' below does not match.
    removeTree(pdfPath(""));
    // A strict answer is complete in the pipe by now, and an archive without a length ends with this process.
    const auto pause = Answers::current().areStrict() ? std::chrono::seconds(0) : kPauseAfterSending;
    area.cleanUp(pause);
}
