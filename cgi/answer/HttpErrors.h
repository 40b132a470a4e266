#pragma once

#include <string>

#include "cgi/answer/Header.h"

// Writes the strict answer to a request that fails: a page of one sentence, which may contain text from the
// request or the storage. A 405 names the allowed methods; a 503 says when to try again.
void writeErrorPage(Status status, const std::string& sentence);
