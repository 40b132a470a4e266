#pragma once

#include <string>

#include "cgi/Header.h"

// The strict answer to a request that cannot be carried out: a page of one sentence, which may hold what the
// request or the storage brought in. A 405 says which methods there are, a 503 when to try again.
void writeErrorPage(Status status, const std::string& sentence);
