#pragma once

#include <tinyxml.h>

#include <string>

#include "fileman-check/Findings.h"

// The document, parsed again with the line numbers of its elements. The program itself does not read these.
class LinedDocument {
public:
    // Returns false if the program refuses the document; then a finding gives the reason.
    bool read(const std::string& path, Findings& findings);

    // Returns the element that the program reads, or null.
    const TiXmlElement* filter() const;
    // Returns the element that stores the state of the filters.
    const TiXmlElement* firstChild() const;

private:
    TiXmlDocument m_document;
};
