#pragma once

#include <string>
#include <string_view>

#include "cgi/archive/EntryNames.h"

// The names of the PDFs that the converter makes.

inline constexpr std::string_view kPdfSuffix = ".pdf";

// Returns the path of a document's PDF.
std::string pdfPath(const std::string& document);

// The same for one of several documents, with the names that the others have. In default answers two
// documents of one base name get one PDF. Strict answers tell them apart by a number.
std::string pdfPathAmong(const std::string& document, EntryNames& names);
