#pragma once

#include <vector>

#include "fileman-check/Sources.h"

class Findings;
class LinedDocument;

// Finds faults that need no look at the disk: ignored duplicates, words that the program does not know, names
// that lead to another entry.
void checkVocabulary(const LinedDocument& document, Findings& findings);

// Finds sources whose files are missing in the answers to some or all requests.
void checkSources(const std::vector<Source>& sources, Findings& findings);
