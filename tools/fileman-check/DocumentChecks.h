#pragma once

#include <vector>

#include "fileman-check/Sources.h"

class Findings;
class LinedDocument;

// What the text alone tells: ignored duplicates, words that the program does not know, names that lead
// elsewhere.
void checkVocabulary(const LinedDocument& document, Findings& findings);

// Sources whose files some or all requests leave out.
void checkSources(const std::vector<Source>& sources, Findings& findings);
