#pragma once

#include <tinyxml.h>

#include <string>

#include "fileman-check/Findings.h"

// The document, parsed with the line numbers of its elements. The program itself reads it without them.
class LinedDocument {
public:
    // Returns false if the program refuses the document; then a finding gives the reason.
    bool read(const std::string& path, Findings& findings);

    // Returns the element "filter", which the program reads, or null if there is none.
    const TiXmlElement* filter() const;
    // Returns the first child of the root, or null. The program stores the state of the filters there.
    const TiXmlElement* firstChild() const;

private:
    TiXmlDocument m_document;
};
