#include "conf/xml/XmlTags.h"

#include <tinyxml.h>

#include <algorithm>
#include <cctype>

#include "common/CCommUtils.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// How many bytes the parser takes for one UTF-8 character. It does not check the bytes after the first.
std::size_t sequenceLength(char lead) {
    const auto byte = static_cast<unsigned char>(lead);
    if (byte < 0xC2 || byte > 0xF4)
        return 1;
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

} // namespace

XmlTags::XmlTags(const std::string& text) : m_text(text) {
    if (isAt(kByteOrderMark))
        m_encoding = Encoding::Utf8;
}

bool XmlTags::isAt(std::size_t position, std::string_view word) const {
    return m_text.compare(position, word.size(), word) == 0;
}

// In UTF-8 the parser also takes three characters of three bytes as blanks.
bool XmlTags::isBlank(std::size_t position) const {
    if (std::isspace(static_cast<unsigned char>(m_text[position])) != 0)
        return true;
    return m_encoding == Encoding::Utf8 && (isAt(position, kByteOrderMark) ||
                                            isAt(position, "\xEF\xBF\xBE") || isAt(position, "\xEF\xBF\xBF"));
}

bool XmlTags::isAtStartTag() const {
    // The parser takes every byte from 0x7f up as a letter.
    const auto byte = static_cast<unsigned char>(m_position + 1 < m_text.size() ? m_text[m_position + 1] : 0);
    return byte >= 0x7f || byte == '_' || std::isalpha(byte) != 0;
}

// Returns the position after one character of text or of a quoted value.
std::size_t XmlTags::characterEnd(std::size_t position) const {
    const char c = m_text[position];
    if (c == '&' && m_text[position + 1] == '#')
        return std::min(m_text.find(';', position), m_text.size() - 1) + 1;
    const std::size_t length = m_encoding == Encoding::Utf8 ? sequenceLength(c) : 1;
    return std::min(position + length, m_text.size());
}

// Outside the root the parser stops at any character that is not blank.
void XmlTags::skipText() {
    while (m_position < m_text.size() && m_text[m_position] != '<') {
        if (m_depth == 0 && !isBlank(m_position))
            m_position = m_text.size();
        else
            m_position = characterEnd(m_position);
    }
}

void XmlTags::skipPast(std::size_t from, std::string_view end) {
    const std::size_t found = m_text.find(end, from);
    m_position = found == std::string::npos ? m_text.size() : found + end.size();
}

// The parser itself reads a declaration, because the names in it decide which values it reads.
void XmlTags::skipDeclaration() {
    TiXmlDeclaration declaration;
    const char* const begin = m_text.c_str();
    const char* const end =
        declaration.Parse(begin + m_position, nullptr,
                          m_encoding == Encoding::Utf8 ? TIXML_ENCODING_UTF8 : TIXML_ENCODING_LEGACY);
    m_position =
        end == nullptr ? m_text.size() : std::min(static_cast<std::size_t>(end - begin), m_text.size());
    if (m_depth > 0 || m_encoding != Encoding::Unknown)
        return;
    const std::string encoding = declaration.Encoding();
    const bool isUtf8 =
        encoding.empty() || CCommUtils::isEquals(encoding, "UTF-8") || CCommUtils::isEquals(encoding, "UTF8");
    m_encoding = isUtf8 ? Encoding::Utf8 : Encoding::Other;
}

XmlTag XmlTags::readEndTag() {
    skipPast(m_position, ">");
    --m_depth;
    return XmlTag::End;
}

// Reads the value after a '='. Without quotes a value ends at a blank, '/' or '>'.
void XmlTags::readValue() {
    while (m_position < m_text.size() && isBlank(m_position))
        m_position = characterEnd(m_position);
    const std::size_t begin = m_position;
    const char quote = begin < m_text.size() ? m_text[begin] : '\0';
    if (quote == '"' || quote == '\'') {
        do {
            m_position = characterEnd(m_position);
        } while (m_position < m_text.size() && m_text[m_position] != quote);
        m_position = std::min(m_position + 1, m_text.size());
    } else {
        const auto isOver = [&](char c) {
            return c == '/' || c == '>' || std::isspace(static_cast<unsigned char>(c)) != 0;
        };
        while (m_position < m_text.size() && !isOver(m_text[m_position]))
            ++m_position;
    }
    m_values.push_back({begin, m_position});
}

XmlTag XmlTags::readStartTag() {
    m_values.clear();
    while (m_position < m_text.size()) {
        const char c = m_text[m_position++];
        if (c == '=') {
            readValue();
        } else if (c == '>') {
            const bool isEmpty = m_text[m_position - 2] == '/';
            m_depth += isEmpty ? 0 : 1;
            return isEmpty ? XmlTag::Empty : XmlTag::Start;
        }
    }
    // The text ends inside this tag. The parser reads the attributes before it notices that.
    return XmlTag::Start;
}

std::optional<XmlTag> XmlTags::next() {
    constexpr std::string_view kCommentBegin = "<!--";
    for (skipText(); m_position < m_text.size(); skipText()) {
        if (isAt("<?") && CCommUtils::isEquals(m_text.substr(m_position + 2, 3), "xml"))
            skipDeclaration();
        else if (isAt(kCommentBegin))
            skipPast(m_position + kCommentBegin.size(), "-->");
        else if (isAt("<![CDATA["))
            skipPast(m_position, "]]>");
        else if (isAtStartTag())
            return readStartTag();
        else if (isAt("</") && m_depth > 0)
            return readEndTag();
        else
            skipPast(m_position, ">");
    }
    return std::nullopt;
}
