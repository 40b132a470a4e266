#pragma once

#include <list>
#include <string>

// Which of the files that the converter left in its directory are whole PDFs.

// Returns the reason why the file at path cannot be sent as a whole PDF, or null when it can. A file that
// begins like a PDF must also end like one. Any other file is accepted when the converter reported success.
const char* pdfFileObstacle(const std::string& path, bool hasConverterSucceeded);

// Removes each file from the directory that the packer would take although it is not a whole PDF. Reports
// each of them on standard error, and each document without a PDF. Returns false when a file cannot be
// removed.
bool keepWholePdfs(const std::list<std::string>& documents, bool hasConverterSucceeded);
