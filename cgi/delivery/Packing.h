#pragma once

#include <string>

#include "cgi/staging/StagingArea.h"

// Runs the command that packs the area's directory into its archive. False, with a line on standard error,
// when there is no archive of everything that was staged; nothing may be sent then.
//
// zip makes its file beside the archive, frees the archive's name meanwhile and would write through a link
// that somebody puts there. So it finds an empty archive of ours in the archive's place, which it only reads,
// and is told by its environment (ZIPOPT) to write in a directory that nobody else can enter. What it made
// there is given the archive's name in one step. A zip that does not know these options runs without them.
bool pack(const StagingArea& area, const std::string& command);
