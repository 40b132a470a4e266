#include "cgi/CFileManCGI.h"
#include "cgi/delivery/Attachment.h"
#include "cgi/delivery/ChosenIds.h"
#include "cgi/delivery/Obstacles.h"
#include "cgi/delivery/Packing.h"
#include "cgi/delivery/PlainFiles.h"
#include "cgi/delivery/StagingArea.h"
#include "cgi/delivery/Termination.h"
#include "common/FixedPaths.h"

namespace {

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

// The record's page, its data of any extension, a file or directory of just its name, and the "_files"
// directory with the page's pictures. cp complains about those that do not exist; that is no failure.
bool stageRecord(const StagingArea& area, const DownloadPlaces& places) {
    const std::string& name = places.name;
    area.run("mkdir -p " + quoted(places.destination));
    area.run("cd " + places.directory + " && cp -rf " + quoted(name) + ".* " + quoted(name) + " " +
             quoted(name + "_files") + " " + quoted(places.destination));
    // Two records may share a destination: what the first left there must not redirect the second.
    return keepPlainFiles(places.destination, area.places().directory + "/.copy");
}

void stageRecords(const StagingArea& area, const std::list<const _ResultInfo*>& records) {
    for (const _ResultInfo* const record : records) {
        const DownloadPlaces places(*record);
        if (const char* const obstacle = downloadObstacle(places))
            reportLeftOut("download", record->path, obstacle);
        else
            stageRecord(area, places);
    }
}

// What a killed request left is packed for a request that has chosen nothing.
bool prepare(const StagingArea& area, const std::list<const _ResultInfo*>& chosen) {
    const std::string& directory = area.places().directory;
    if (!area.isUsable() || (!chosen.empty() && !area.removeLeftovers()))
        return false;
    stageRecords(area, chosen);
    return !chosen.empty() || keepPlainFiles(directory, directory + "/.copy");
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
void CFileManCGI::downloadResults(std::list<_ResultInfo*> results) {
    const auto ids = ChosenIds::ofRequest(m_queryInfo);
    if (!ids)
        return;
    const StagingArea area({paths::kDownloadDir, paths::kDownloadArchive, paths::kDownloadLock});
    if (area.isAbandoned())
        return;
    const TerminationDeferral deferral;
    const std::string& archive = area.places().archive;
    const std::string& directory = area.places().directory;
    if (prepare(area, ids->choose(results)) && pack(area, "cd " + directory + " && zip -r " + archive + " *"))
        sendAttachment(archive);
    else
        sendEmptyAttachment(archive);
    area.cleanUp("rm -rf " + archive + " " + directory + "/* &");
}
