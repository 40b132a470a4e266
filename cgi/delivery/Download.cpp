#include <cstdio>

#include "cgi/CFileManCGI.h"
#include "cgi/delivery/Delivery.h"
#include "cgi/delivery/FileStream.h"
#include "cgi/delivery/Selection.h"
#include "cgi/delivery/StagingArea.h"
#include "cgi/delivery/Termination.h"
#include "common/CCommUtils.h"
#include "common/FixedPaths.h"

namespace {

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

// The record's page, its data of any extension, a file or directory of just its name, and the "_files"
// directory with the page's pictures. cp complains about those that do not exist; that is no failure.
void stageRecord(const StagingArea& area, const DownloadPlaces& places) {
    const std::string& name = places.name;
    area.run("mkdir -p " + quoted(places.destination));
    area.run("cd " + places.directory + " && cp -rf " + quoted(name) + ".* " + quoted(name) + " " +
             quoted(name + "_files") + " " + quoted(places.destination));
    // Two records may share a destination: what the first left there must not redirect the second.
    area.keepPlainFiles(places.destination);
}

void stageRecords(const StagingArea& area, const std::list<const _ResultInfo*>& records) {
    for (const _ResultInfo* const record : records) {
        const DownloadPlaces places(*record);
        if (const char* const obstacle = downloadObstacle(places))
            delivery::reportLeftOut("download", *record, obstacle);
        else
            stageRecord(area, places);
    }
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): callers hand over a list of their own
void CFileManCGI::downloadResults(std::list<_ResultInfo*> results) {
    const auto ids = RecordIds::ofRequest(m_queryInfo);
    if (!ids)
        return;
    const std::list<const _ResultInfo*> chosen = ids->choose(results);
    const std::string archive = paths::kDownloadArchive;
    const TerminationDeferral deferral;
    const StagingArea area({paths::kDownloadDir, archive, paths::kDownloadLock});
    if (!chosen.empty())
        area.removeLeftovers();
    stageRecords(area, chosen);
    area.run("cd /tmp/download && zip -r " + archive + " *");
    downloadFile(archive);
    delivery::waitBeforeCleanUp();
    area.run("rm -rf " + archive + " /tmp/download/* &");
}

int CFileManCGI::downloadFile(const std::string& path) {
    const IgnoreBrokenPipe ignoreBrokenPipe;
    FileStream file(path);
    std::printf("Content-Disposition:attachment;filename=%s\r\n", CCommUtils::completeFileName(path).c_str());
    std::printf("Content-Length:%lld\r\n", file.size());
    std::printf("Content-Type:application/octet-stream\r\n");
    std::printf("\r\n");
    file.send();
    return 1;
}
