#include "cgi/archive/RecordFiles.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "common/CCommUtils.h"

namespace {

bool isBefore(const DirEntry& entry, std::string_view name) {
    return entry.name < name;
}

} // namespace

bool belongsToRecord(std::string_view name, std::string_view entry) {
    if (entry.substr(0, name.size()) != name)
        return false;
    const std::string_view rest = entry.substr(name.size());
    return rest.empty() || rest.front() == '.' || rest == "_files";
}

SortedDirectory::SortedDirectory(UniqueFd directory, const std::string& path)
    : m_path(path), m_openError(directory ? 0 : errno), m_opened(std::move(directory), path),
      m_isRead(m_opened.listing && !m_opened.hasFailed) {
    if (!m_isRead)
        return;
    for (const DirEntry entry : *m_opened.listing)
        m_entries.push_back(entry);
    std::sort(m_entries.begin(), m_entries.end(),
              [](const DirEntry& first, const DirEntry& second) { return first.name < second.name; });
}

std::vector<DirEntry> SortedDirectory::entriesOf(const _ResultInfo& record) const {
    const bool isAlone = record.name.empty();
    const std::string name = isAlone ? CCommUtils::completeFileName(record.path) : record.name;
    std::vector<DirEntry> found;
    const auto first = std::lower_bound(m_entries.begin(), m_entries.end(), name, isBefore);
    for (auto at = first; at != m_entries.end() && at->name.substr(0, name.size()) == name; ++at) {
        if (isAlone ? at->name == name : belongsToRecord(name, at->name))
            found.push_back(*at);
    }
    return found;
}
