#include "fileman/load/SpecialSources.h"

#include <memory>

#include "common/CCommUtils.h"
#include "common/ControlBytes.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/RecordId.h"
#include "fileman/load/Diagnostics.h"

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

int SpecialSources::loadExtraDir(const ExtraDirInfo& extra) {
    const _ResultFilter& filter = m_filter.fields();
    if (!(extra.isResult ? filter.includeResults : filter.includeProfiles))
        return 0;
    // A port filter leaves out every directory without a port, but never one with a port. This is
    // intentional.
    if (extra.port.empty() && !filter.ports.empty())
        return 0;
    if (!m_filter.passesTest(extra.key))
        return 0;
    FileSource source;
    source.dir = entryPath(paths::kHome, extra.dir_name);
    source.record.module = extra.module;
    source.record.mode = extra.mode;
    source.record.test = CFileManConf::getTypeName(extra.key);
    source.record.port = extra.port;
    source.record.rsltype = halfWord(extra.isResult);
    source.record.type = extra.key;
    const int count = m_files.list(std::move(source));
    if (count == 0)
        return 0;
    m_loaded.visitNewestPaths(
        [](const std::string& path) { diagnostics::write("Find at:" + withoutControlBytes(path)); });
    return count;
}

int SpecialSources::loadFiberMonitor(const LoadInfo& info) {
    // Unlike in other sources, an empty list selects nothing here. This is intentional.
    if (!m_filter.namesTest("fmonitor"))
        return 0;
    FileSource source;
    source.dir = entryPath(entryPath(paths::kHome, info.dir),
                           info.isResult != 0 ? "fmonitor-result" : "fmonitor-setup");
    source.record.module = info.module;
    source.record.mode = info.mode;
    source.record.test = CFileManConf::getTypeName("fmonitor");
    source.record.rsltype = halfWord(info.isResult != 0);
    source.record.type = "fmonitor";
    return m_files.list(std::move(source));
}

int SpecialSources::loadMtie() {
    // As for the fiber monitor, an empty list selects nothing.
    if (!m_filter.namesTest("mtie"))
        return 0;
    const std::string root = paths::kMtieDir;
    const Directory* const directory = m_tree.open(root);
    if (directory == nullptr)
        return 0;
    _ResultInfo started;
    started.module = "2G5";
    started.mode = "SDH/PDH";
    started.test = CFileManConf::getTypeName("mtie");
    started.rsltype = halfWord(true);
    started.type = "mtie";
    int count = 0;
    for (const DirEntry entry : *directory) {
        const std::string measurement = entryPath(root, entry.name);
        if (entry.type != EntryType::Directory || !m_tree.exists(entryPath(measurement, "mtie")))
            continue;
        // The path contains the name twice, and there is no test that such a file exists. This is
        // intentional: the record is the measurement, not a file.
        const std::string item = entryPath(measurement, entry.name);
        if (!m_files.advanced().passes(entry.name, item))
            continue;
        auto record = std::make_unique<_ResultInfo>(started);
        record->name = entry.name;
        record->path = item;
        if (m_files.readsDates())
            record->datetime = CCommUtils::createDateTime(item);
        record->id = makeId(*record);
        m_loaded.add(record.release());
        ++count;
    }
    return count;
}
