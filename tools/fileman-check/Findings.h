#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// The faults that were found, each with its line in the document.
class Findings {
public:
    // line: 0 if no line of the document declares it.
    void add(int line, std::string text) { m_items.push_back({line, std::move(text)}); }
    bool hasLine(int line) const;
    std::size_t size() const { return m_items.size(); }

    // Writes "document:line: text" in the order of the lines.
    void write(std::FILE* out, const std::string& document) const;

private:
    struct Item {
        int line;
        std::string text;
    };
    std::vector<Item> m_items;
};

// "text", with control bytes as '?', for messages that quote a document or a file name.
std::string quoted(const std::string& text);
