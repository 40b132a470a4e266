#pragma once

#include <sys/types.h>

#include <list>
#include <string>

#include "fileman/ResultInfo.h"

// One document for the converter, and the path of the PDF that it makes.
struct PdfTask {
    std::string document;
    std::string pdf;
};
using TaskList = std::list<PdfTask>;

// The mode of the file. Others may read it: an instrument's converter may run as another user.
inline constexpr mode_t kTaskListMode = 0644;

// Returns a task for each record. A record whose path the list cannot carry is left out, with a line on
// standard error.
TaskList tasksOf(const std::list<const _ResultInfo*>& records);

// Returns what the converter reads: one line "/home/DIRECTORY/NAME.html -> NAME.pdf" for each task.
std::string textOf(const TaskList& tasks);

std::list<std::string> documentsOf(const TaskList& tasks);
