// Compares the limits that are tested before parsing with what the XML parser finds.

#include <tinyxml.h>

#include <algorithm>
#include <memory>

#include "FuzzInput.h"
#include "conf/XmlFile.h"

namespace {

constexpr int kDeepestNesting = 128;
constexpr std::ptrdiff_t kMostAttributes = 256;
constexpr char kPath[] = "/tmp/gate.xml";

int depthOf(const TiXmlNode& node) {
    int depth = 0;
    xml::forEachChild(node, [&](const TiXmlElement& child) { depth = std::max(depth, 1 + depthOf(child)); });
    return depth;
}

std::ptrdiff_t mostAttributes(const TiXmlNode& node) {
    std::ptrdiff_t most = 0;
    xml::forEachChild(node, [&](const TiXmlElement& child) {
        std::ptrdiff_t count = 0;
        for (const TiXmlAttribute* each = child.FirstAttribute(); each != nullptr; each = each->Next())
            ++count;
        most = std::max({most, count, mostAttributes(child)});
    });
    return most;
}

std::string printed(const TiXmlDocument& document) {
    TiXmlPrinter printer;
    document.Accept(&printer);
    return printer.Str();
}

// So small that it is far from every limit.
bool isSmall(const std::string& text) {
    return std::count(text.begin(), text.end(), '<') < kDeepestNesting &&
           std::count(text.begin(), text.end(), '=') < kMostAttributes;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    writeFuzzFile(kPath, text);
    const std::unique_ptr<TiXmlDocument> passed = xml::load(kPath);
    if (passed) {
        require(depthOf(*passed) <= kDeepestNesting, "no document is nested deeper than the limit");
        require(mostAttributes(*passed) <= kMostAttributes, "no element has more attributes than the limit");
    }
    if (!isSmall(text))
        return 0;
    // A text ends at its first zero byte. The parser does not notice a zero byte inside a UTF-8 sequence.
    writeFuzzFile(kPath, text.substr(0, text.find('\0')) + std::string(4, '\0'));
    TiXmlDocument alone;
    const bool isParsed = alone.LoadFile(kPath) && alone.RootElement() != nullptr;
    require(isParsed == (passed != nullptr), "a small document passes when the parser takes it");
    require(!isParsed || printed(alone) == printed(*passed), "the parser sees the document as it stands");
    return 0;
}
