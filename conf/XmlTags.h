#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// A part of a text: the offsets of its first byte and of the byte behind its last one.
struct TextRange {
    std::size_t begin;
    std::size_t end;
};

enum class XmlTag { Start, Empty, End };

// The tags of a text where TinyXML sees them, without its recursion. The parser has readings of its own that
// hide or show tags to a reader of plain bytes, so this one follows them: in UTF-8 a lead byte takes the
// bytes behind it unseen, and "&#" takes everything up to the next ';'.
class XmlTags {
public:
    // The text must outlive this.
    explicit XmlTags(const std::string& text);

    // The next tag; nothing where the parser stops, at the end of the text at the latest. A start tag that
    // the text breaks off in counts.
    std::optional<XmlTag> next();

    // Of the tag that next gave: the elements open behind it, where it ends, and its attributes' values with
    // their quotes, in the order of the text.
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
