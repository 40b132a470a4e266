#include "fileman-check/Findings.h"

#include <algorithm>

#include "common/ControlBytes.h"

bool Findings::hasLine(int line) const {
    return std::any_of(m_items.begin(), m_items.end(), [&](const Item& item) { return item.line == line; });
}

void Findings::write(std::FILE* out, const std::string& document) const {
    std::vector<Item> items = m_items;
    std::stable_sort(items.begin(), items.end(),
                     [](const Item& a, const Item& b) { return a.line < b.line; });
    for (const Item& item : items) {
        if (item.line == 0)
            std::fprintf(out, "%s: %s\n", document.c_str(), item.text.c_str());
        else
            std::fprintf(out, "%s:%d: %s\n", document.c_str(), item.line, item.text.c_str());
    }
}

std::string quoted(const std::string& text) {
    return '"' + withoutControlBytes(text) + '"';
}
