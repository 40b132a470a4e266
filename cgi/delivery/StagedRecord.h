#pragma once

#include "cgi/delivery/UnsafeNames.h"
#include "cgi/staging/StagingArea.h"

// Copies a record with its companions to its destination in the area. Returns null when every file of it is
// there whole, as a plain file. Otherwise returns the reason, and the area keeps nothing of the record.
const char* stageRecord(const StagingArea& area, const DownloadPlaces& places);
