#include <cstdio>
#include <iterator>
#include <memory>

#include "common/CCommUtils.h"
#include "common/ControlBytes.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"
#include "fileman/load/FileStep.h"
#include "fileman/load/LoadPass.h"
#include "fileman/load/LoadedList.h"

int CFileManager::loadScreenShot() {
    const std::string dir = m_home + paths::kScreenDir;
    if (m_tree->open(dir) == nullptr || !passesTests("screen"))
        return 0;
    if (m_tests.empty() && !showsScreenType(dir)) {
        std::list<std::string> found;
        CFileManConf::getCurrentTypeKeys(found);
        if (!found.empty() && !CCommUtils::isContains(found, "screen"))
            return 0;
    }
    FileSource source;
    source.dir = dir;
    source.storedInfo = StoredInfo::Companion;
    source.scratch = Scratch::Keep;
    source.record.module = "Common";
    source.record.test = "Screen";
    source.record.rsltype = resultWord(true);
    source.record.type = "screen";
    return listFiles(source);
}

int CFileManager::loadExtraResult(int index) {
    const std::list<ExtraDirInfo>& extras = CFileManConf::getExtraDirList();
    const bool declared = index >= 0 && static_cast<std::size_t>(index) < extras.size();
    return loadExtraDir(declared ? *std::next(extras.begin(), index) : ExtraDirInfo());
}

int CFileManager::loadExtraDir(const ExtraDirInfo& extra) {
    if (!(extra.isResult ? m_filter.includeResults : m_filter.includeProfiles))
        return 0;
    // Only a directory without a port is left out by a port filter; one with a port never is: wanted.
    if (extra.port.empty() && !m_filter.ports.empty())
        return 0;
    if (!passesTests(extra.key))
        return 0;
    FileSource source;
    source.dir = entryPath(m_home, extra.dir_name);
    source.record.module = extra.module;
    source.record.mode = extra.mode;
    source.record.test = CFileManConf::getTypeName(extra.key);
    source.record.port = extra.port;
    source.record.rsltype = resultWord(extra.isResult);
    source.record.type = extra.key;
    const std::size_t before = m_loaded->size();
    const int count = listFiles(source);
    // Wanted: the lines stand in the response, before its header. A path of more than one line would add
    // header lines of its own.
    m_loaded->visitPaths(before, [](const std::string& path) {
        std::printf("Find at:%s\n", withoutControlBytes(path).c_str());
    });
    return count;
}

int CFileManager::loadFmonitorResult(const LoadInfo& info) {
    // Unlike elsewhere an empty list passes nothing: wanted.
    if (!m_tests.contains("fmonitor"))
        return 0;
    FileSource source;
    source.dir = m_home + "/" + info.dir + "/" + (info.isResult != 0 ? "fmonitor-result" : "fmonitor-setup");
    source.record.module = info.module;
    source.record.mode = info.mode;
    source.record.test = CFileManConf::getTypeName("fmonitor");
    source.record.rsltype = resultWord(info.isResult != 0);
    source.record.type = "fmonitor";
    return listFiles(source);
}

int CFileManager::loadMtieResult() {
    // As for the fiber monitor an empty list passes nothing.
    if (!m_tests.contains("mtie"))
        return 0;
    const std::string root = m_home + paths::kMtieDir;
    const Directory* const directory = m_tree->open(root);
    if (directory == nullptr)
        return 0;
    _ResultInfo prototype;
    prototype.module = "2G5";
    prototype.mode = "SDH/PDH";
    prototype.test = CFileManConf::getTypeName("mtie");
    prototype.rsltype = resultWord(true);
    prototype.type = "mtie";
    int count = 0;
    for (const DirEntry entry : *directory) {
        const std::string name(entry.name);
        const std::string measurement = entryPath(root, name);
        if (entry.type != EntryType::Directory || !m_tree->exists(entryPath(measurement, "mtie")))
            continue;
        // The name twice, and not tested for existence: wanted, the item is the measurement, not a file.
        const std::string item = entryPath(measurement, name);
        _AdvanceInfo named;
        named.fileName = name;
        if (!matchesStoredInfo(item, named))
            continue;
        auto record = std::make_unique<_ResultInfo>(prototype);
        record->name = name;
        record->path = item;
        if (m_readsDates)
            record->datetime = CCommUtils::createDateTime(item);
        addResultInfo(record.release());
        ++count;
    }
    return count;
}
