#include <map>
#include <vector>

#include "cgi/CFileManCGI.h"
#include "cgi/answer/Answers.h"
#include "cgi/answer/HttpErrors.h"
#include "cgi/archive/StreamedDownload.h"
#include "cgi/delivery/Attachment.h"
#include "cgi/delivery/ChosenIds.h"
#include "cgi/delivery/FileStream.h"
#include "cgi/delivery/Packing.h"
#include "cgi/delivery/StagedRecord.h"
#include "cgi/delivery/Termination.h"
#include "cgi/delivery/UnsafeNames.h"
#include "cgi/staging/CopiedLinks.h"
#include "cgi/staging/StagingArea.h"
#include "common/CCommUtils.h"
#include "common/Report.h"

namespace {

// The records that are staged at each destination.
using Destinations = std::map<std::string, std::vector<const _ResultInfo*>>;

// A result and a profile with the same name share a destination. When both have a file of the same name, the
// second replaces the first.
void reportSharing(const _ResultInfo& first, const _ResultInfo& second) {
    if (CCommUtils::absFilePath(first.path) != CCommUtils::absFilePath(second.path))
        report("download", first.path + " and " + second.path,
               "one directory in the archive, where of two files of one name the second stays");
}

// A failure removes the whole destination, so all records that shared it are reported as left out.
void stageAt(const StagingArea& area, const _ResultInfo& record, const DownloadPlaces& places,
             std::vector<const _ResultInfo*>& present) {
    if (!present.empty())
        reportSharing(*present.back(), record);
    present.push_back(&record);
    const char* const reason = stageRecord(area, places);
    if (reason == nullptr)
        return;
    for (const _ResultInfo* const lost : present)
        reportLeftOut("download", lost->path, reason);
    present.clear();
}

void stageRecords(const StagingArea& area, const std::list<const _ResultInfo*>& records) {
    Destinations destinations;
    for (const _ResultInfo* const record : records) {
        const DownloadPlaces places(*record);
        if (const char* const obstacle = downloadObstacle(places))
            reportLeftOut("download", record->path, obstacle);
        else
            stageAt(area, *record, places, destinations[places.destination]);
    }
}

// Leftovers of a killed request are not removed when this request has chosen no record: the archive then
// contains them. This is intentional.
bool prepare(const StagingArea& area, const std::list<const _ResultInfo*>& chosen) {
    const std::string& directory = area.places().directory;
    if (!area.isUsable() || (!chosen.empty() && !area.removeLeftovers()))
        return false;
    stageRecords(area, chosen);
    return !chosen.empty() || keepPlainFiles(directory, directory + "/.copy");
}

// The strict answer: an archive that is written while it is made. Nothing is staged.
void streamChosen(const ChosenIds& ids, const std::list<const _ResultInfo*>& chosen) {
    const IgnoreBrokenPipe ignoreBrokenPipe;
    const auto writeHeader = [] { writeAttachmentHeader("fileman_download.zip"); };
    switch (streamDownload(chosen, ids.unknown(chosen), writeHeader)) {
    case Streamed::Sent:
        break;
    case Streamed::NothingStored:
        refuse(refusal::kNothingStored);
        break;
    case Streamed::NothingReadable:
        refuse(refusal::kNothingReadable);
        break;
    }
}

} // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the given interface takes a copy
void CFileManCGI::downloadResults(std::list<_ResultInfo*> results) {
    const auto ids = ChosenIds::of(getQueryList("rsltid"));
    if (!ids)
        return;
    const auto chosen = ids->choose(results);
    if (Answers::current().areStrict()) {
        streamChosen(*ids, chosen);
        return;
    }
    StagingArea& area = stagingArea(ACTION_DOWNLOAD);
    area.takeTurn();
    if (area.isAbandoned())
        return;
    const TerminationDeferral deferral;
    const std::string& archive = area.places().archive;
    const std::string& directory = area.places().directory;
    if (prepare(area, chosen) && pack(area, "cd " + directory + " && zip -r " + archive + " *"))
        sendAttachment(archive);
    else
        sendEmptyAttachment(archive);
    area.cleanUp(kPauseAfterSending);
}
