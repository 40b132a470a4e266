#include "cgi/pdf/TaskList.h"

#include "cgi/archive/EntryNames.h"
#include "cgi/delivery/UnsafeNames.h"
#include "cgi/pdf/PdfNames.h"
#include "common/CCommUtils.h"

TaskList tasksOf(const std::list<const _ResultInfo*>& records) {
    TaskList tasks;
    EntryNames names;
    for (const _ResultInfo* const record : records) {
        if (const char* const obstacle = pdfObstacle(record->path))
            reportLeftOut("export to PDF", record->path, obstacle);
        else
            tasks.push_back({record->path, pdfPathAmong(record->path, names)});
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
