#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

// The list of faults. Each fault has its line in the document.
class Findings {
public:
    // line is 0 if the fault is not at a line of the document.
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

// Returns the text in quotation marks, with '?' instead of control bytes. Messages use it for texts from the
// document and for file names.
std::string quoted(const std::string& text);
