#pragma once

#include <string>

#include "cgi/staging/StagingArea.h"

// Runs the command that packs the area's directory into its archive. Returns false, with a line on standard
// error, when there is no archive of everything that was staged. Then nothing may be sent.
//
// By default zip writes a temporary file beside the archive. The name of the archive is free in the meantime,
// and zip would write through a link that another user puts there. So this function first makes an empty
// archive there, which zip only reads. The environment variable ZIPOPT tells zip to write in a directory that
// nobody else can enter. The new archive is then renamed to its final path in one step.
bool pack(const StagingArea& area, const std::string& command);
