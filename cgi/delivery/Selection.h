#pragma once

#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "fileman/ResultInfo.h"

// Which records a delivery is about, and which of them its commands can carry.

// The ids that a request names in its key "rsltid".
class RecordIds {
public:
    // Nothing for a request without the key.
    static std::optional<RecordIds> ofRequest(const std::map<std::string, std::string>& query);

    bool contains(const std::string& id) const { return m_ids.count(id) != 0; }
    // The chosen records in the order of results.
    std::list<const _ResultInfo*> choose(const std::list<_ResultInfo*>& results) const;

private:
    std::set<std::string> m_ids;
};

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
