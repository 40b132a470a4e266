#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// The rules that leave a chosen record out of a delivery, because its name or path cannot be written safely
// into the commands.

// The texts of one record in the commands of a download.
struct DownloadPlaces {
    explicit DownloadPlaces(const _ResultInfo& record);
    DownloadPlaces() = default;

    std::string name;        // between single quotes
    std::string directory;   // unquoted
    std::string destination; // between single quotes
};

// Returns the reason why the commands of a download cannot contain these texts, or null when they can.
const char* downloadObstacle(const DownloadPlaces& places);

// Returns the reason why the task list and the zip command of a PDF export cannot contain this path, or null
// when they can.
const char* pdfObstacle(const std::string& path);

// Reports on standard error that the delivery (for example "download") leaves out a record or file.
void reportLeftOut(const char* delivery, const std::string& path, const char* reason);
