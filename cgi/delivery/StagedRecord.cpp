#include "cgi/delivery/StagedRecord.h"

#include <unistd.h>

#include "cgi/staging/CopiedTree.h"
#include "cgi/staging/PlainFiles.h"
#include "cgi/staging/RemoveTree.h"
#include "cgi/staging/Shell.h"
#include "common/CCommUtils.h"
#include "fileman/disk/Directory.h"

namespace {

std::string quoted(const std::string& text) {
    return "'" + text + "'";
}

// The record's page, its data of any extension, a file or directory of just its name, and the "_files"
// directory with the page's pictures.
bool belongsTo(const std::string& name, std::string_view entry) {
    if (entry.substr(0, name.size()) != name)
        return false;
    const std::string_view rest = entry.substr(name.size());
    return rest.empty() || rest.front() == '.' || rest == "_files";
}

// What cp was asked for, in the order of the listing; nothing when that cannot be told.
std::optional<std::vector<DirEntry>> companions(const std::optional<Directory>& listing,
                                                const std::string& name) {
    if (!listing)
        return std::nullopt;
    std::vector<DirEntry> found;
    for (const DirEntry entry : *listing) {
        if (belongsTo(name, entry.name))
            found.push_back(entry);
    }
    return found;
}

// cp's status does not tell: it complains about every place where a record has no companion.
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
        // A record of some ten thousand companions is more than a command can take.
        if (status == shell::kCannotBeStarted && !tree.make(source, copy, entry.type))
            return "it cannot be copied";
        if (!tree.isWhole(source, copy, entry.type))
            return "its copy is not whole";
    }
    return nullptr;
}

// A label that holds a '/' makes directories on the way, which other records may share.
void removeCopy(const StagingArea& area, const std::string& destination) {
    removeTree(destination);
    std::string parent = CCommUtils::absFilePath(destination);
    while (parent.size() > area.places().directory.size() && ::rmdir(parent.c_str()) == 0)
        parent = CCommUtils::absFilePath(parent);
}

} // namespace

const char* stageRecord(const StagingArea& area, const DownloadPlaces& places) {
    const char* reason = copyRecord(area, places);
    // Two records may share a destination: what the first left there must not redirect the second.
    if (reason == nullptr && !keepPlainFiles(places.destination, area.places().directory + "/.copy"))
        reason = "its links cannot be replaced by what they lead to";
    if (reason != nullptr)
        removeCopy(area, places.destination);
    return reason;
}
