#pragma once

#include "fileman/ResultInfo.h"

namespace delivery {

// One line on standard error for a chosen record that a command cannot carry.
void reportLeftOut(const char* delivery, const _ResultInfo& record, const char* reason);

// Gives the server a second to take the body before the files behind it are removed.
void waitBeforeCleanUp();

} // namespace delivery
