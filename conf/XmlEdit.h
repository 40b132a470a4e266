#pragma once

#include <memory>
#include <string>

#include "common/UniqueFd.h"

class TiXmlDocument;

namespace xml {
struct Failure;
}

// A document while its attribute values are changed. Its directory is locked (flock) as long as this lives,
// so that the changes of several processes follow one another; not the file, which each of them replaces.
class XmlEdit {
public:
    // Loads the file at path, which may be a link. Waits up to ten seconds for other writers.
    explicit XmlEdit(const std::string& path);
    XmlEdit(const XmlEdit&) = delete;
    XmlEdit& operator=(const XmlEdit&) = delete;
    ~XmlEdit();

    // Null after a line on standard error: locked by others, refused, not well-formed, or without a root that
    // the parser sees. Without a line when there is no file.
    TiXmlDocument* document() const { return m_document.get(); }

    // Gives the file the attribute values of the document, atomically; every other byte stays. False after a
    // line on standard error, and the file is as it was: when it was changed by a writer that does not lock,
    // when a value cannot stand in XML or would not be read back, and when the system refuses.
    bool save();

private:
    bool load(xml::Failure& failure);

    std::string m_path; // links resolved
    UniqueFd m_lock;
    std::string m_content; // of the file, as it was loaded or saved
    std::unique_ptr<TiXmlDocument> m_document;
};
