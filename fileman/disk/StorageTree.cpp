#include "fileman/disk/StorageTree.h"

#include <unistd.h>

#include <cerrno>
#include <climits>

#include "common/DotEntry.h"
#include "common/Report.h"
#include "common/Retry.h"

StorageTree::Place& StorageTree::visit(const std::string& path) {
    const auto [position, isNew] = m_places.try_emplace(path);
    Place& place = position->second;
    if (!isNew)
        return place;
    // The last directory is closed before the next is opened, so that one descriptor is enough.
    m_openDescriptor.reset();
    OpenedDirectory opened(path);
    m_failures += opened.hasFailed || opened.isClosed ? 1 : 0;
    place.directory = std::move(opened.listing);
    m_openDirectory = place.directory ? &*place.directory : nullptr;
    m_openDescriptor = std::move(opened.descriptor);
    return place;
}

void StorageTree::forget() {
    m_places.clear();
    m_openDirectory = nullptr;
    m_openDescriptor.reset();
}

int StorageTree::descriptorOf(const Directory& directory) const {
    return &directory == m_openDirectory ? m_openDescriptor.get() : -1;
}

Directory* StorageTree::openListed(const std::string& path) {
    Place& place = visit(path);
    return place.directory ? &*place.directory : nullptr;
}

Directory* StorageTree::open(const std::string& path) {
    const bool isMissing = m_places.count(path) == 0 && lookUp(path) == Answer::Nothing;
    return isMissing ? nullptr : openListed(path);
}

bool StorageTree::exists(const std::string& path) {
    const Answer answer = lookUp(path);
    return answer == Answer::AskSystem ? askSystem(path) : answer != Answer::Nothing;
}

bool StorageTree::askSystem(const std::string& path) {
    if (retryInterrupted([&] { return ::access(path.c_str(), F_OK); }) == 0)
        return true;
    if (reportUnlessAbsent("look for", path, errno))
        ++m_failures;
    return false;
}

bool StorageTree::isListedDirectory(const std::string& path) {
    return lookUp(path) == Answer::Directory;
}

// Goes from path up to the first known parent, and down again. If the path contains a link, a dot entry or an
// empty component, the answer is AskSystem, because only the system can resolve it.
StorageTree::Answer StorageTree::lookUp(const std::string& path) {
    if (path == m_root)
        return Answer::Directory;
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos || slash < m_root.size() || path.size() >= PATH_MAX)
        return Answer::AskSystem;
    const std::string_view name = std::string_view(path).substr(slash + 1);
    if (name.empty() || isDotEntry(name))
        return Answer::AskSystem;
    const std::string parent = path.substr(0, slash);
    const auto known = m_places.find(parent);
    Place* place = known == m_places.end() ? nullptr : &known->second;
    // A directory that was opened through a link is known too, but its listing answers no question here.
    if (place == nullptr || !place->isListed) {
        const Answer answer = lookUp(parent);
        // Below a file there is nothing.
        if (answer != Answer::Directory)
            return answer == Answer::File ? Answer::Nothing : answer;
        place = &visit(parent);
        place->isListed = true;
    }
    if (!place->directory)
        return Answer::AskSystem;
    const std::optional<EntryType> type = place->directory->find(name);
    if (!type)
        return Answer::Nothing;
    switch (*type) {
    case EntryType::Directory:
        return Answer::Directory;
    case EntryType::RegularFile:
        return Answer::File;
    case EntryType::Other:
        break;
    }
    return Answer::AskSystem;
}
