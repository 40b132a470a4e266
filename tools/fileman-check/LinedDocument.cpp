#include "fileman-check/LinedDocument.h"

#include <cstring>
#include <optional>

#include "conf/XmlFile.h"
#include "conf/XmlLimits.h"

namespace {

std::string reason(const xml::Failure& failure) {
    return failure.errorNumber != 0 ? std::strerror(failure.errorNumber) : failure.why;
}

} // namespace

bool LinedDocument::read(const std::string& path, Findings& findings) {
    xml::Failure failure;
    const std::optional<std::string> content = xml::readContent(path, xml::kLargestFile, failure);
    TiXmlDocument asRead;
    const bool isAccepted = content && xml::parse(asRead, *content, failure);
    // A document within the limits may be parsed once more, even if it is not well-formed.
    if (content && (isAccepted || asRead.Error()))
        m_document.Parse(content->c_str(), nullptr, TIXML_ENCODING_UNKNOWN);
    if (!isAccepted)
        findings.add(m_document.Error() ? m_document.ErrorRow() : 0,
                     "the program refuses the document: " + reason(failure));
    return isAccepted;
}

const TiXmlElement* LinedDocument::filter() const {
    const TiXmlElement* child = firstChild();
    while (child != nullptr && !xml::isNamed(*child, "filter"))
        child = child->NextSiblingElement();
    return child;
}

const TiXmlElement* LinedDocument::firstChild() const {
    const TiXmlElement* const root = m_document.RootElement();
    return root == nullptr ? nullptr : root->FirstChildElement();
}
