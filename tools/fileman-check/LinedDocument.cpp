#include "fileman-check/LinedDocument.h"

#include <cerrno>
#include <cstring>
#include <optional>

#include "conf/xml/XmlFile.h"
#include "conf/xml/XmlLimits.h"

namespace {

std::string message(const xml::Failure& failure) {
    if (failure.errorNumber == ENOENT)
        return "there is no such file, and without a document the program lists screenshots alone";
    if (failure.errorNumber != 0)
        return std::string("the program cannot read the document: ") + std::strerror(failure.errorNumber);
    return "the program refuses the document: " + failure.why;
}

} // namespace

bool LinedDocument::read(const std::string& path, Findings& findings) {
    xml::Failure failure;
    const std::optional<std::string> content = xml::readContent(path, xml::kLargestFile, failure);
    TiXmlDocument asRead;
    const bool isAccepted = content && xml::parse(asRead, *content, failure);
    // A document within the limits is parsed again, also if it is not well-formed, to get the line numbers.
    if (content && (isAccepted || asRead.Error()))
        m_document.Parse(content->c_str(), nullptr, TIXML_ENCODING_UNKNOWN);
    if (!isAccepted)
        findings.add(m_document.Error() ? m_document.ErrorRow() : 0, message(failure));
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
