#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A part of a text: the offset of its first byte, and the offset after its last byte.
struct TextRange {
    std::size_t begin;
    std::size_t end;
};

enum class XmlTag { Start, Empty, End };

// Finds the tags of a text exactly where TinyXML sees them, but without recursion. TinyXML differs from a
// plain search for '<', and this class follows it: in UTF-8 a lead byte skips the bytes of its sequence
// without a check, and "&#" skips everything up to the next ';'.
class XmlTags {
public:
    // The text must live longer than this object.
    explicit XmlTags(const std::string& text);

    // Returns the next tag, or nullopt where the parser stops. A start tag that the end of the text cuts off
    // counts.
    std::optional<XmlTag> next();

    // About the tag that next returned: the number of open elements after it, its end, and its attribute
    // values with their quotes, in the order of the text.
    int depth() const { return m_depth; }
    std::size_t end() const { return m_position; }
    const std::vector<TextRange>& values() const { return m_values; }

private:
    enum class Encoding { Unknown, Utf8, Other };

    bool isAt(std::string_view word) const { return isAt(m_position, word); }
    bool isAt(std::size_t position, std::string_view word) const;
    bool isBlank(std::size_t position) const;
    bool isAtStartTag() const;
    std::size_t characterEnd(std::size_t position) const;
    void skipText();
    void skipPast(std::size_t from, std::string_view end);
    void skipDeclaration();
    XmlTag readEndTag();
    XmlTag readStartTag();
    void readValue();

    const std::string& m_text;
    std::size_t m_position = 0;
    std::vector<TextRange> m_values;
    int m_depth = 0;
    Encoding m_encoding = Encoding::Unknown;
};
