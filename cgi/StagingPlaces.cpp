#include "cgi/CFileManCGI.h"
#include "cgi/pdf/TaskList.h"
#include "cgi/staging/StagingArea.h"
#include "common/FixedPaths.h"

namespace {

StagingPlaces placesOf(CFileManCGI::ActionType delivery) {
    if (delivery == CFileManCGI::ACTION_PDF)
        return {paths::kPdfDir,      paths::kPdfArchive,     paths::kNewPdfArchive, paths::kPdfLock,
                paths::kPdfTaskList, paths::kNewPdfTaskList, kTaskListMode};
    return {paths::kDownloadDir,
            paths::kDownloadArchive,
            paths::kNewDownloadArchive,
            paths::kDownloadLock,
            // no task list
            {},
            {},
            0};
}

} // namespace

StagingArea& CFileManCGI::stagingArea(ActionType delivery) {
    if (!m_stagingArea)
        m_stagingArea = std::make_shared<StagingArea>(placesOf(delivery));
    return *m_stagingArea;
}
