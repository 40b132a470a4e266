#include "cgi/delivery/StagedRecord.h"

#include <unistd.h>

#include "cgi/archive/RecordFiles.h"
#include "cgi/staging/CopiedLinks.h"
#include "cgi/staging/CopiedTree.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/Shell.h"
#include "common/CCommUtils.h"
#include "fileman/disk/Directory.h"

namespace {

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

// Returns the entries that cp should have copied, in the order of the listing; nullopt without a listing.
std::optional<std::vector<DirEntry>> companions(const std::optional<Directory>& listing,
                                                const std::string& name) {
    if (!listing)
        return std::nullopt;
    std::vector<DirEntry> found;
    for (const DirEntry entry : *listing) {
        if (belongsToRecord(name, entry.name))
            found.push_back(entry);
    }
    return found;
}

// The exit status of cp says nothing: cp fails for each of its three patterns that matches no file. So the
// copies are compared with the storage.
const char* copyRecord(const StagingArea& area, const DownloadPlaces& places) {
    const std::string& name = places.name;
    if (area.run("mkdir -p " + quoted(places.destination)) != 0)
        return "its directory in the archive cannot be made";
    const timespec begun = CopiedTree::now();
    const int status =
        area.run("cd " + places.directory + " && cp -rf " + quoted(name) + ".* " + quoted(name) + " " +
                 quoted(name + "_files") + " " + quoted(places.destination));
    const auto listing = readWholeDirectory(places.directory);
    const auto entries = companions(listing, name);
    if (!entries)
        return "its directory cannot be read";
    if (entries->empty())
        return "nothing of it is stored any more";
    const CopiedTree tree(begun);
    for (const DirEntry entry : *entries) {
        const std::string source = entryPath(places.directory, entry.name);
        const std::string copy = entryPath(places.destination, entry.name);
        // A record with some ten thousand companions has more files than one command can take as arguments.
        if (status == shell::kCannotBeStarted && !tree.make(source, copy, entry.type))
            return "it cannot be copied";
        if (!tree.isWhole(source, copy, entry.type))
            return "its copy is not whole";
    }
    return nullptr;
}

// Removes the destination and its empty parent directories. A label that contains '/' makes such directories,
// and other records may share them.
void removeCopy(const StagingArea& area, const std::string& destination) {
    removeTree(destination);
    std::string parent = CCommUtils::absFilePath(destination);
    while (parent.size() > area.places().directory.size() && ::rmdir(parent.c_str()) == 0)
        parent = CCommUtils::absFilePath(parent);
}

} // namespace

const char* stageRecord(const StagingArea& area, const DownloadPlaces& places) {
    const char* reason = copyRecord(area, places);
    // Two records may share a destination. A link that the first left there must not redirect the second.
    if (reason == nullptr && !keepPlainFiles(places.destination, area.places().directory + "/.copy"))
        reason = "its links cannot be replaced by what they lead to";
    if (reason != nullptr)
        removeCopy(area, places.destination);
    return reason;
}
