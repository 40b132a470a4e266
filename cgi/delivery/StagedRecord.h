#pragma once

#include "cgi/delivery/Obstacles.h"
#include "cgi/staging/StagingArea.h"

// Copies a record with its companions to its destination in the area. Null when all that the storage holds of
// it stands there whole, as plain files; else why not, and then nothing of it stays in the area.
const char* stageRecord(const StagingArea& area, const DownloadPlaces& places);
