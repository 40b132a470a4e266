#include "fileman/load/FileStep.h"

#include <utility>

#include "common/CCommUtils.h"
#include "common/FileDate.h"
#include "conf/CFileManConf.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"
#include "fileman/load/LoadedList.h"

namespace {

bool isNone(const std::string& choice) {
    return CCommUtils::isEquals(choice, "None");
}

// What has to be known of a file before the filter can tell whether it passes.
enum class Needs { Nothing, Name, StoredInfo };

Needs needsOf(const _AdvanceInfo& filter) {
    if (!filter.jobId.empty() || !filter.account.empty() || isNone(filter.locator) || isNone(filter.type))
        return Needs::StoredInfo;
    const bool blank = filter.fileName.empty() && filter.prefix.empty() && filter.suffix.empty();
    return blank ? Needs::Nothing : Needs::Name;
}

// The criteria that need nothing but the name.
_AdvanceInfo nameCriteria(const _AdvanceInfo& filter) {
    _AdvanceInfo criteria;
    criteria.prefix = filter.prefix;
    criteria.fileName = filter.fileName;
    criteria.suffix = filter.suffix;
    return criteria;
}

std::string storedInfoName(StoredInfo kind, std::string_view fileName, const std::string& base) {
    switch (kind) {
    case StoredInfo::Plain:
        return base;
    case StoredInfo::Companion:
        return base + ".xml";
    case StoredInfo::Itself:
        break;
    }
    return std::string(fileName);
}

} // namespace

bool CFileManager::matchesStoredInfo(const std::string& path, const _AdvanceInfo& named) {
    const _AdvanceInfo& filter = m_filter.advanceInfo;
    if (needsOf(filter) != Needs::StoredInfo)
        return CFileManConf::advMatch(filter, named);
    if (!CFileManConf::advMatch(nameCriteria(filter), named))
        return false;
    const auto [place, isNew] = m_storedInfo.try_emplace(path);
    _AdvanceInfo& file = place->second;
    if (isNew)
        file = CFileManConf::getAdvInfo(_AdvanceInfo(), path);
    file.fileName = named.fileName;
    return CFileManConf::advMatch(filter, file);
}

bool CFileManager::isWanted(const FileSource& source, const Directory& directory, std::string_view fileName,
                            const _AdvanceInfo& named) {
    const _AdvanceInfo& filter = m_filter.advanceInfo;
    if (needsOf(filter) != Needs::StoredInfo)
        return CFileManConf::advMatch(filter, named);
    const std::string stored = storedInfoName(source.storedInfo, fileName, named.fileName);
    // A name that the listing lacks needs no attempt to open it.
    return directory.find(stored) ? matchesStoredInfo(entryPath(source.dir, stored), named)
                                  : CFileManConf::advMatch(filter, named);
}

int CFileManager::listFiles(FileSource source) {
    const Directory* const directory =
        source.isListed ? m_tree->openListed(source.dir) : m_tree->open(source.dir);
    if (directory == nullptr)
        return 0;
    m_loaded->startFiles(std::move(source.record), source.dir);
    const std::size_t before = m_loaded->size();
    const bool passesAll = needsOf(m_filter.advanceInfo) == Needs::Nothing;
    const DateReader::Session session(m_dates);
    m_dates.setDirectory(source.dir, m_tree->descriptorOf(*directory));
    _AdvanceInfo named;
    for (const DirEntry entry : *directory) {
        if (entry.type != EntryType::RegularFile)
            continue;
        const std::string_view fileName = entry.name;
        if (!CCommUtils::isMatchedFile(m_extensions, fileName))
            continue;
        if (source.scratch == Scratch::Drop && isAntiFileName(fileName))
            continue;
        if (!passesAll) {
            named.fileName = fileName.substr(0, fileName.find('.'));
            if (!isWanted(source, *directory, fileName, named))
                continue;
        }
        // It is known already when the directory is listed a second time.
        if (m_readsDates && Directory::changeTime(fileName.data()) == kTimeNotAsked)
            directory->keepChangeTime(fileName.data(), m_dates.read(fileName.data()));
        m_loaded->addFile(fileName.data());
    }
    return static_cast<int>(m_loaded->size() - before);
}
