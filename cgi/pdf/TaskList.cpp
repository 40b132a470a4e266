#include "cgi/pdf/TaskList.h"

#include "cgi/answer/Answers.h"
#include "cgi/archive/EntryNames.h"
#include "cgi/delivery/UnsafeNames.h"
#include "cgi/pdf/PdfCheck.h"
#include "common/CCommUtils.h"

namespace {

// In default answers two documents of one base name get one PDF. Strict answers tell them apart by a number.
std::string pdfPathFor(const std::string& document, EntryNames& names) {
    std::string path = pdfPath(document);
    if (!Answers::current().areStrict())
        return path;
    const std::string name = names.take("", CCommUtils::dirName(path), EntryNames::Kind::File);
    return CCommUtils::absFilePath(path) + "/" + name;
}

} // namespace

TaskList tasksOf(const std::list<const _ResultInfo*>& records) {
    TaskList tasks;
    EntryNames names;
    for (const _ResultInfo* const record : records) {
        if (const char* const obstacle = pdfObstacle(record->path))
            reportLeftOut("export to PDF", record->path, obstacle);
        else
            tasks.push_back({record->path, pdfPathFor(record->path, names)});
    }
    return tasks;
}

std::string textOf(const TaskList& tasks) {
    std::string text;
    for (const PdfTask& task : tasks)
        text.append(task.document).append(" -> ").append(CCommUtils::dirName(task.pdf)).append("\n");
    return text;
}

std::list<std::string> documentsOf(const TaskList& tasks) {
    std::list<std::string> documents;
    for (const PdfTask& task : tasks)
        documents.push_back(task.document);
    return documents;
}
