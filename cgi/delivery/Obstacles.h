#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// Which chosen records the commands of a delivery cannot carry, and why.

// Where a record stands in the commands of a download.
struct DownloadPlaces {
    explicit DownloadPlaces(const _ResultInfo& record);
    DownloadPlaces() = default;

    std::string name;        // between single quotes
    std::string directory;   // unquoted
    std::string destination; // between single quotes
};

// Why the commands of a download cannot carry these as they stand; null when they can.
const char* downloadObstacle(const DownloadPlaces& places);

// Why the task list and the zip command of a PDF export cannot carry a result's path; null when they can.
const char* pdfObstacle(const std::string& path);

// One line on standard error for a record or file that the delivery ("download") goes on without.
void reportLeftOut(const char* delivery, const std::string& path, const char* reason);
