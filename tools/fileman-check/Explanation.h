#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "fileman-check/Requests.h"
#include "fileman-check/Sources.h"

// Writes which requests list the file at path, and why other requests do not. Returns true if at least one
// list has it.
bool explain(std::FILE* out, const std::string& path, const std::vector<Source>& sources,
             const Requests& requests);
