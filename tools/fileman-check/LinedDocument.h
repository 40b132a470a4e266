#pragma once

#include <tinyxml.h>

#include <string>

#include "fileman-check/Findings.h"

// The document once more, with the lines of its elements: the program itself reads it without them.
class LinedDocument {
public:
    // False when the program refuses the document; then a finding says why.
    bool read(const std::string& path, Findings& findings);

    // The element that the program reads; null when there is none.
    const TiXmlElement* filter() const;
    // The element in which it looks for the stored state of the filters.
    const TiXmlElement* firstChild() const;

private:
    TiXmlDocument m_document;
};
