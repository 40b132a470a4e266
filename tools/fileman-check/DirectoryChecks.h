#pragma once

#include <vector>

#include "fileman-check/Requests.h"
#include "fileman-check/Sources.h"

class Findings;

// Finds directories that the document declares but the disk lacks, and the opposite.
void checkDirectories(const std::vector<Source>& sources, const Requests& requests, Findings& findings);
