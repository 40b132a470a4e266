#include "cgi/CFileManCGI.h"
#include "cgi/staging/StagingArea.h"
#include "common/FixedPaths.h"

namespace {

StagingPlaces placesOfDownload() {
    StagingPlaces places;
    places.directory = paths::kDownloadDir;
    places.archive = paths::kDownloadArchive;
    places.newArchive = paths::kNewDownloadArchive;
    places.lock = paths::kDownloadLock;
    return places;
}

StagingPlaces placesOfPdfExport() {
    StagingPlaces places;
    places.directory = paths::kPdfDir;
    places.archive = paths::kPdfArchive;
    places.newArchive = paths::kNewPdfArchive;
    places.lock = paths::kPdfLock;
    places.taskList = paths::kPdfTaskList;
    places.newTaskList = paths::kNewPdfTaskList;
    return places;
}

} // namespace

StagingArea& CFileManCGI::stagingArea(ActionType delivery) {
    if (!m_stagingArea)
        m_stagingArea =
            std::make_shared<StagingArea>(delivery == ACTION_PDF ? placesOfPdfExport() : placesOfDownload());
    return *m_stagingArea;
}
