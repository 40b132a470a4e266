// Tests a configuration document: the limits that are tested before parsing, by what the XML parser finds,
// then its records and the lookups in them.

#include <algorithm>
#include <set>

#include "FuzzInput.h"
#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "conf/ConfState.h"
#include "conf/xml/XmlFile.h"

namespace {

using Conf = CFileManConf;

constexpr int kDeepestNesting = 128;
constexpr std::ptrdiff_t kMostAttributes = 256;
constexpr char kPath[] = "/tmp/document.xml";

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

void checkLimits(const std::string& text) {
    writeFile(kPath, text);
    const std::unique_ptr<TiXmlDocument> passed = xml::load(kPath);
    if (passed) {
        require(depthOf(*passed) <= kDeepestNesting, "no document is nested deeper than the limit");
        require(mostAttributes(*passed) <= kMostAttributes, "no element has more attributes than the limit");
    }
    // The rest holds for texts that are far from every limit.
    if (std::count(text.begin(), text.end(), '<') >= kDeepestNesting ||
        std::count(text.begin(), text.end(), '=') >= kMostAttributes)
        return;
    // A text ends at its first zero byte. The parser does not notice a zero byte inside a UTF-8 sequence.
    writeFile(kPath, text.substr(0, text.find('\0')) + std::string(4, '\0'));
    TiXmlDocument alone;
    const bool isParsed = alone.LoadFile(kPath) && alone.RootElement() != nullptr;
    require(isParsed == (passed != nullptr), "a small document passes when the parser takes it");
    require(!isParsed || printed(alone) == printed(*passed), "the parser sees the document as it stands");
}

template<typename Record>
std::string firstMatch(const std::map<std::string, Record>& records, std::string Record::*field,
                       const std::string& text, std::string Record::*result) {
    for (const auto& [key, record] : records) {
        if (CCommUtils::isEquals(record.*field, text))
            return record.*result;
    }
    return "";
}

// Asks for every name in the document.
void checkLookups() {
    const auto& modes = Conf::getModesInfo();
    const auto& types = Conf::getTypesInfo();
    std::set<std::string> names = {""};
    for (const auto& [key, mode] : modes)
        names.insert({key, mode.label});
    for (const auto& [key, type] : types)
        names.insert({key, type.label, type.name});
    for (const std::string& name : names) {
        const std::pair<std::string, std::string> answers[] = {
            {Conf::modeName2Label(name), firstMatch(modes, &_ModeInfo::name, name, &_ModeInfo::label)},
            {Conf::modeLabel2ModeName(name), firstMatch(modes, &_ModeInfo::label, name, &_ModeInfo::name)},
            {Conf::typeKey2Label(name), firstMatch(types, &_TypeInfo::key, name, &_TypeInfo::label)},
            {Conf::typeLabel2Key(name), firstMatch(types, &_TypeInfo::label, name, &_TypeInfo::key)}};
        for (const auto& [found, expected] : answers)
            require(found == expected, "a lookup finds the first match");
    }
}

void checkRecords(const std::string& text) {
    writeFile(kPath, text);
    resetConfState();
    const bool isRead = Conf::readConf(kPath);
    const std::size_t extras = Conf::getExtraDirList().size();
    require(isRead || (Conf::getModulesInfo().empty() && extras == 0), "an unusable document brings nothing");
    checkLookups();
    require(Conf::readConf(kPath) == isRead, "read again alike");
    require(Conf::getExtraDirList().size() == 2 * extras, "each reading brings its extra directories");
    checkLookups();
    resetConfState();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    checkLimits(text);
    checkRecords(text);
    return 0;
}
