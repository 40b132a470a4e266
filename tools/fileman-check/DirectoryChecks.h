#pragma once

#include <vector>

#include "fileman-check/Requests.h"
#include "fileman-check/Sources.h"

class Findings;

// Finds declared directories that do not exist, and listed files that no declared directory explains.
void checkDirectories(const std::vector<Source>& sources, const Requests& requests, Findings& findings);
