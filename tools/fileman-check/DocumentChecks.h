#pragma once

#include <vector>

#include "fileman-check/Sources.h"

class Findings;
class LinedDocument;

// Finds faults in the text alone: ignored duplicates, words that the program does not know, names that lead
// to another entry.
void checkVocabulary(const LinedDocument& document, Findings& findings);

// Finds sources whose files some or all requests leave out.
void checkSources(const std::vector<Source>& sources, Findings& findings);
