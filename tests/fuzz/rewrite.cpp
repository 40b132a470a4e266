// Changes the value of one attribute and rewrites the file. Input: the attribute (a letter), the element (a
// digit), the value up to the end of the line, then the document.

#include <algorithm>
#include <optional>
#include <vector>

#include "FuzzInput.h"
#include "conf/xml/DocumentUpdate.h"
#include "conf/xml/XmlFile.h"

namespace {

constexpr char kPath[] = "/tmp/rewrite.xml";
constexpr const char* kNames[] = {"checked", "jobid", "account", "name", "prefix", "suffix"};

struct Change {
    std::size_t element;
    std::string name;
    std::string value;
};

void collect(TiXmlNode& node, std::vector<TiXmlElement*>& out) {
    xml::forEachChild(node, [&](TiXmlElement& element) {
        out.push_back(&element);
        collect(element, out);
    });
}

// Returns the file after the change, or nullopt if there was nothing to change or the change was refused.
std::optional<std::string> rewritten(const std::string& text, const Change& change) {
    writeFile(kPath, text);
    DocumentUpdate edit(kPath);
    std::vector<TiXmlElement*> elements;
    if (edit.document() != nullptr)
        collect(*edit.document(), elements);
    if (change.element >= elements.size())
        return std::nullopt;
    elements[change.element]->SetAttribute(change.name, change.value);
    const bool isSaved = edit.save();
    const std::string now = readFile(kPath);
    if (!isSaved) {
        require(now == text, "a refused change leaves the file alone");
        return std::nullopt;
    }
    const std::unique_ptr<TiXmlDocument> again = xml::load(kPath);
    require(again != nullptr && printed(*again) == printed(*edit.document()),
            "a change is read back as it was made");
    return now;
}

// Two changes of the same value show its place. The text before and after it must be the old one.
void checkSurroundings(const std::string& text, Change change) {
    change.value = "qvq1";
    const std::optional<std::string> one = rewritten(text, change);
    change.value = "qvq22";
    const std::optional<std::string> two = rewritten(text, change);
    if (!one || !two || *one == text || *two == text)
        return;
    const auto front = std::mismatch(one->begin(), one->end(), two->begin(), two->end()).first;
    const auto back = std::mismatch(one->rbegin(), one->rend(), two->rbegin(), two->rend()).first.base();
    std::string before(one->begin(), front), behind(back, one->end());
    require(before + "1" + behind == *one && before + "22" + behind == *two, "only the value differs");
    const std::string added = " " + change.name + "=\"qvq";
    const bool isNew = before.size() >= added.size() && text.size() + added.size() + 2 == one->size() &&
                       before.compare(before.size() - added.size(), added.size(), added) == 0;
    before.erase(before.size() - (isNew ? added.size() : 5));
    behind.erase(0, 1);
    require(before.size() + behind.size() <= text.size() && text.compare(0, before.size(), before) == 0 &&
                text.compare(text.size() - behind.size(), behind.size(), behind) == 0,
            "every other byte stays");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::string line = input.line();
    if (line.size() < 2)
        return 0;
    const auto letter = static_cast<unsigned char>(line[0]);
    const Change change = {static_cast<unsigned char>(line[1]) % std::size_t{10}, kNames[letter % 6],
                           line.substr(2)};
    rewritten(input.rest(), change);
    checkSurroundings(input.rest(), change);
    return 0;
}
