#pragma once

#include <list>
#include <string>

// The files that the converter left in its directory.

// Why the file at path cannot be sent as a whole PDF; null when it can. What calls itself a PDF has to end as
// one; anything else is taken from a converter that reported success.
const char* pdfFileObstacle(const std::string& path, bool hasConverterSucceeded);

// The path of a document's PDF.
std::string pdfPath(const std::string& document);

// Removes from the directory what the packer would take although it is no whole PDF. A line on standard error
// for each, and one for each document that has no PDF. False when something cannot be removed.
bool keepWholePdfs(const std::list<std::string>& documents, bool hasConverterSucceeded);
