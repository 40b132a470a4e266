#pragma once

#include <memory>
#include <string>

#include "conf/xml/DocumentLock.h"

class TiXmlDocument;

namespace xml {
struct Failure;
}

// Opens a document to change its attribute values. It is locked (DocumentLock.h) during the lifetime of this
// object, so that several processes make their changes one after the other.
class DocumentUpdate {
public:
    // Loads the file at path, which may be a link. Waits for other writers.
    explicit DocumentUpdate(const std::string& path);
    DocumentUpdate(const DocumentUpdate&) = delete;
    DocumentUpdate& operator=(const DocumentUpdate&) = delete;
    ~DocumentUpdate();

    // Returns null when the document is locked by others, over a limit, not well-formed, or has no root that
    // the parser sees; these are reported on standard error. Also returns null when there is no file.
    TiXmlDocument* document() const { return m_document.get(); }

    // Writes the attribute values of the document into the file, atomically. Every other byte stays. Returns
    // false, with a line on standard error and the file unchanged, when a writer without the lock has changed
    // the file, when a value is not allowed in XML or would be read back differently, or when the system
    // fails.
    bool save();

private:
    bool load(xml::Failure& failure);

    std::string m_path; // links resolved
    DocumentLock m_lock;
    std::string m_content; // the file's content when it was last loaded or saved
    std::unique_ptr<TiXmlDocument> m_document;
};
