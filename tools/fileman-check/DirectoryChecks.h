#pragma once

#include <vector>

#include "fileman-check/Requests.h"
#include "fileman-check/Sources.h"

class Findings;

// What the document says and the disk does not have, or the other way round.
void checkDirectories(const std::vector<Source>& sources, const Requests& requests, Findings& findings);
