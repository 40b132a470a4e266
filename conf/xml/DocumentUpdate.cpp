#include "conf/xml/DocumentUpdate.h"

#include <tinyxml.h>

#include <cerrno>
#include <new>
#include <optional>
#include <utility>

#include "common/AtomicFile.h"
#include "common/Report.h"
#include "conf/xml/XmlFile.h"
#include "conf/xml/XmlLimits.h"
#include "conf/xml/XmlRewrite.h"

namespace {

constexpr char kTask[] = "rewrite document";

// The document as text, to compare two documents.
std::string printed(const TiXmlDocument& document) {
    TiXmlPrinter printer;
    printer.SetStreamPrinting(); // without the indentation, which may be longer than the document
    document.Accept(&printer);
    return printer.Str();
}

// Returns content with the attribute values of document, or nullopt when the result would not be read back as
// document.
std::optional<std::string> rewritten(const std::string& content, const TiXmlDocument& document) {
    TiXmlDocument before, after;
    xml::Failure failure;
    if (!xml::parse(before, content, failure))
        return std::nullopt;
    std::optional<std::string> changed = withAttributesOf(document, before, content);
    before.Clear();
    if (!changed || changed->size() > static_cast<std::size_t>(xml::kLargestFile) ||
        !xml::parse(after, *changed, failure) || printed(after) != printed(document))
        return std::nullopt;
    return changed;
}

} // namespace

DocumentUpdate::DocumentUpdate(const std::string& path) : m_path(resolveLinks(path)) {
    xml::Failure failure;
    if (m_path.empty())
        failure.errorNumber = errno;
    else if (m_lock = DocumentLock(m_path); !m_lock.isHeld() || load(failure))
        return;
    xml::reportFailure(path, failure);
}

DocumentUpdate::~DocumentUpdate() = default;

bool DocumentUpdate::load(xml::Failure& failure) try {
    std::optional<std::string> content = xml::readContent(m_path, xml::kLargestFile, failure);
    if (!content)
        return false;
    m_content = std::move(*content);
    m_document = std::make_unique<TiXmlDocument>();
    if (!xml::parse(*m_document, m_content, failure))
        m_document.reset();
    return m_document != nullptr;
} catch (const std::bad_alloc&) {
    m_document.reset();
    failure.errorNumber = ENOMEM;
    return false;
}

bool DocumentUpdate::save() try {
    xml::Failure failure;
    const std::optional<std::string> now = xml::readContent(m_path, xml::kLargestFile, failure);
    // A writer without the lock may have replaced the file. Its change must not be lost.
    if (now != m_content) {
        report(kTask, m_path, "it has changed meanwhile");
        return false;
    }
    std::optional<std::string> changed = rewritten(m_content, *m_document);
    if (!changed) {
        report(kTask, m_path, "it cannot hold the new values");
        return false;
    }
    if (!replaceFile(m_path, *changed))
        return false;
    m_content = std::move(*changed);
    return true;
} catch (const std::bad_alloc&) {
    reportErrno(kTask, m_path, ENOMEM);
    return false;
}
