#include <list>
#include <string>
#include <utility>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/RecordId.h"
#include "fileman/load/SpecialSources.h"

bool SpecialSources::isScreenTypeCurrent(const std::string& dir) {
    if (m_scan.willFindScreenType(dir))
        return true;
    m_scan.finish();
    std::list<std::string> found;
    CFileManConf::getCurrentTypeKeys(found);
    // If no type was found at all, screenshots count as current. This is intentional.
    return found.empty() || CCommUtils::isContains(found, "screen");
}

int SpecialSources::loadScreenShots() {
    const std::string dir = paths::kScreenDir;
    if (m_tree.open(dir) == nullptr || !m_filter.passesTest("screen"))
        return 0;
    if (m_filter.fields().tests.empty() && !isScreenTypeCurrent(dir))
        return 0;
    FileSource source;
    source.dir = dir;
    source.storedInfo = StoredInfo::Companion;
    source.lastConfiguration = LastConfiguration::Keep;
    source.record.module = "Common";
    source.record.test = "Screen";
    source.record.rsltype = halfWord(true);
    source.record.type = "screen";
    return m_files.list(std::move(source));
}
