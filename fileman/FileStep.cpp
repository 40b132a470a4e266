#include "fileman/FileStep.h"

#include <memory>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/StorageTree.h"

namespace {

bool isNone(const std::string& choice) {
    return CCommUtils::isEquals(choice, "None");
}

// Only then can what is stored about a file decide; its name is known without reading anything.
bool needsStoredInfo(const _AdvanceInfo& filter) {
    return !filter.jobId.empty() || !filter.account.empty() || isNone(filter.locator) || isNone(filter.type);
}

// The criteria that need nothing but the name.
_AdvanceInfo nameCriteria(const _AdvanceInfo& filter) {
    _AdvanceInfo criteria;
    criteria.prefix = filter.prefix;
    criteria.fileName = filter.fileName;
    criteria.suffix = filter.suffix;
    return criteria;
}

_AdvanceInfo knownByName(const std::string& base) {
    _AdvanceInfo file;
    file.fileName = base;
    return file;
}

std::string storedInfoName(StoredInfo kind, const std::string& fileName, const std::string& base) {
    switch (kind) {
    case StoredInfo::Plain:
        return base;
    case StoredInfo::Companion:
        return base + ".xml";
    case StoredInfo::Itself:
        break;
    }
    return fileName;
}

} // namespace

bool CFileManager::matchesStoredInfo(const std::string& path, const std::string& base) {
    const _AdvanceInfo& filter = m_filter.advanceInfo;
    if (!needsStoredInfo(filter))
        return CFileManConf::advMatch(filter, knownByName(base));
    if (!CFileManConf::advMatch(nameCriteria(filter), knownByName(base)))
        return false;
    const auto [place, isNew] = m_storedInfo.try_emplace(path);
    _AdvanceInfo& file = place->second;
    if (isNew)
        file = CFileManConf::getAdvInfo(_AdvanceInfo(), path);
    file.fileName = base;
    return CFileManConf::advMatch(filter, file);
}

bool CFileManager::isWanted(const FileSource& source, const Directory& directory, const std::string& fileName,
                            const std::string& base) {
    const _AdvanceInfo& filter = m_filter.advanceInfo;
    if (!needsStoredInfo(filter))
        return CFileManConf::advMatch(filter, knownByName(base));
    const std::string stored = storedInfoName(source.storedInfo, fileName, base);
    // A name that the listing lacks needs no attempt to open it.
    return directory.find(stored) ? matchesStoredInfo(entryPath(source.dir, stored), base)
                                  : CFileManConf::advMatch(filter, knownByName(base));
}

void CFileManager::addRecord(const _ResultInfo& prototype, const std::string& name, const std::string& path) {
    auto record = std::make_unique<_ResultInfo>(prototype);
    record->name = name;
    record->path = path;
    record->datetime = CCommUtils::createDateTime(path);
    addResultInfo(record.release());
}

int CFileManager::listFiles(const FileSource& source) {
    const Directory* const directory = m_tree->open(source.dir);
    if (directory == nullptr)
        return 0;
    int count = 0;
    std::string fileName;
    for (const DirEntry entry : *directory) {
        if (entry.type != EntryType::RegularFile)
            continue;
        fileName = entry.name;
        if (!CCommUtils::isMatchedFile(m_extensions, fileName))
            continue;
        if (source.scratch == Scratch::Drop && isAntiFileName(fileName))
            continue;
        const std::string base = CCommUtils::baseFileName(fileName);
        if (!isWanted(source, *directory, fileName, base))
            continue;
        addRecord(source.record, base, entryPath(source.dir, fileName));
        ++count;
    }
    return count;
}
