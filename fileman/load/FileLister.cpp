#include "fileman/load/FileLister.h"

#include <optional>
#include <utility>
#include <vector>

#include "fileman/disk/DirectoryDates.h"
#include "fileman/names/ListedFiles.h"

namespace {

bool isListedName(const FileSource& source, std::string_view fileName) {
    return listed::hasExtension(fileName) &&
           (source.lastConfiguration == LastConfiguration::Keep || !listed::isLastConfiguration(fileName));
}

} // namespace

bool FileLister::passes(const FileSource& source, Directory& directory, std::string_view fileName) {
    const std::string_view base = listed::baseName(fileName);
    if (m_advanced.needs() != StoredInfoFilter::Needs::StoredInfo)
        return m_advanced.passesByName(base);
    const std::string stored = storedInfoName(source.storedInfo, fileName, base);
    // If the listing lacks the file, there is no need to open it.
    return directory.find(stored) ? m_advanced.passes(base, entryPath(source.dir, stored))
                                  : m_advanced.passesByName(base);
}

int FileLister::list(FileSource source) {
    Directory* const directory = source.isListed ? m_tree.openListed(source.dir) : m_tree.open(source.dir);
    if (directory == nullptr)
        return 0;
    // Most requests have no criteria here; then no file is tested.
    const bool passesAll = m_advanced.needs() == StoredInfoFilter::Needs::Nothing;
    std::optional<DirectoryDates> dates;
    std::vector<ListedFile> files;
    for (const DirEntry entry : *directory) {
        if (entry.type != EntryType::RegularFile || !isListedName(source, entry.name))
            continue;
        if (!passesAll && !passes(source, *directory, entry.name))
            continue;
        // The reader is made for the first file, so that a directory without files is not opened again.
        if (m_readsDates && !dates)
            dates.emplace(source.dir, m_tree.descriptorOf(*directory));
        files.push_back({entry.name, dates ? dates->read(entry.name.data()) : kDateNotRead});
    }
    const auto count = static_cast<int>(files.size());
    m_loaded.addFiles(std::move(source.record), source.dir, std::move(files));
    return count;
}
