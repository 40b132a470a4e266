#include "fileman/names/PortNames.h"

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/names/Suffixes.h"

namespace {

// A directory name, or the end of one, and its label.
struct PortLabel {
    const char* pattern;
    const char* label;
};
constexpr PortLabel kDualPortLabels[] = {{"p1", "M1"}, {"p2", "M2"}};
// The plain name belongs to the second module, unlike in fromDirName. This exchange is intentional.
constexpr PortLabel k10gLabels[] = {{"10gport", "10G M2"}, {"10gport2", "10G M1"}};

template<std::size_t Count>
std::string findLabel(const PortLabel (&labels)[Count], const std::string& dirName, bool matchEnd) {
    for (const PortLabel& entry : labels) {
        if (matchEnd ? CCommUtils::isEndsWith(dirName, entry.pattern)
                     : CCommUtils::isEquals(dirName, entry.pattern))
            return entry.label;
    }
    return {};
}

} // namespace

bool ports::isPortDir(const std::string& dirName) {
    return CCommUtils::isEndsWith(dirName, suffix::kPort) || CCommUtils::isEndsWith(dirName, suffix::kPort2);
}

std::string ports::fromDirName(const std::string& dirName, int suffixLength) {
    if (dirName.empty())
        return "Unknown";
    if (CCommUtils::isStartsWith(dirName, "10gport"))
        return CCommUtils::isEndsWith(dirName, "2") ? "10G P2" : "10G P1";
    if (suffixLength >= 0)
        return CFileManConf::getPortName(
            CCommUtils::cutLast(dirName, static_cast<std::size_t>(suffixLength)));
    // A name that does not end in "port" is cut by the length of "port2", even if it ends in something else.
    // This is intentional: the loaders have tested the name.
    const bool isPlain = CCommUtils::isEndsWith(dirName, suffix::kPort);
    return CFileManConf::getPortName(suffix::cut(dirName, isPlain ? suffix::kPort : suffix::kPort2));
}

std::list<std::string> ports::fromDirNames(const std::list<std::string>& dirNames) {
    std::list<std::string> names;
    for (const std::string& dirName : dirNames)
        names.push_back(fromDirName(dirName));
    return names;
}

std::string ports::labelOf(TestMode family, const std::string& dirName, bool matchEnd) {
    switch (family) {
    case TM_SDH:
    case TM_CPRI:
        return findLabel(kDualPortLabels, dirName, matchEnd);
    case TM_ETHERNET:
    case TM_FIBER_CHANNEL:
    case TM_ODU0:
    case TM_OTUX:
        return findLabel(k10gLabels, dirName, matchEnd);
    case TM_COMMON:
    case TM_CABLE:
        break;
    }
    return {};
}

std::string ports::labelOfOtux(bool isResult, const std::string& dirName, bool matchEnd) {
    return isResult ? findLabel(kDualPortLabels, dirName, matchEnd)
                    : findLabel(k10gLabels, dirName, matchEnd);
}

bool ports::showsLabel(TestMode family, const std::string& dirName) {
    switch (family) {
    case TM_ETHERNET:
    case TM_ODU0:
    case TM_OTUX:
    case TM_SDH:
        // "10g" also covers "10gport".
        return CCommUtils::isContains(dirName, "2g5") || CCommUtils::isContains(dirName, "10g");
    case TM_FIBER_CHANNEL:
        return CCommUtils::isContains(dirName, "10gport");
    case TM_COMMON:
    case TM_CABLE:
    case TM_CPRI:
        break;
    }
    return false;
}
