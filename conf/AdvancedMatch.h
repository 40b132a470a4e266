#pragma once

#include "conf/ResultFilter.h"

// Which files match the advanced filter: CFileManConf::advMatch, and isNone of ResultFilter.h.

// Whether all fields are empty or "None".
bool isBlank(const _AdvanceInfo& info);
