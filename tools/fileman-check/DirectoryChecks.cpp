#include "fileman-check/DirectoryChecks.h"

#include <set>
#include <string>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman-check/Findings.h"
#include "fileman/disk/StorageTree.h"

namespace {

void checkExistence(const Source& source, StorageTree& tree, Findings& findings) {
    if (!tree.exists(source.dir)) {
        findings.add(source.line, source.title + ": the directory " + quoted(source.dir) + " does not exist");
        return;
    }
    if (source.shape != Source::Shape::Fixed)
        return;
    for (const std::string& name : source.names) {
        if (!tree.exists(entryPath(source.dir, name)))
            findings.add(source.line, source.title + ": the directory " +
                                          quoted(entryPath(source.dir, name)) + " does not exist");
    }
}

void checkModeIsFound(const Source& source, StorageTree& tree, Findings& findings) {
    if (source.mode.empty() || source.isExtra || !tree.exists(source.dir) ||
        CFileManConf::getModesInfo().count(source.mode) == 0 || CFileManConf::isCurrentMode(source.mode))
        return;
    findings.add(
        source.line,
        source.title +
            ": no directory below /home has the name that the mode's entry gives in rslt_dir_name or "
            "prof_dir_name, so the filter page does not offer this mode, and lists without a choice "
            "of modes leave it out");
}

// Returns the line of the innermost source whose directory contains the path, or 0.
int lineOf(const std::string& path, const std::vector<Source>& sources) {
    const Source* innermost = nullptr;
    for (const Source& source : sources) {
        if (path.compare(0, source.dir.size() + 1, source.dir + "/") == 0 &&
            (innermost == nullptr || source.dir.size() > innermost->dir.size()))
            innermost = &source;
    }
    return innermost == nullptr ? 0 : innermost->line;
}

// Adds a finding for each directory whose files are listed but cannot be viewed or downloaded, unless there
// is already a finding for the same line.
void checkDeliveries(const std::vector<Source>& sources, const Requests& requests, Findings& findings) {
    std::set<std::string> delivered;
    for (const auto& [path, row] : requests.rows(Requests::Deliveries))
        delivered.insert(row.id + '\0' + path);
    std::set<std::string> told;
    for (const Requests::Kind kind : {Requests::Results, Requests::Profiles, Requests::Screenshots}) {
        for (const auto& [path, row] : requests.rows(kind)) {
            const std::string dir = path.substr(0, path.rfind('/'));
            if (delivered.count(row.id + '\0' + path) != 0 || !told.insert(dir).second)
                continue;
            const int line = lineOf(path, sources);
            if (line == 0 || !findings.hasLine(line))
                findings.add(line, std::string(Requests::title(kind)) + " lists the files in " + quoted(dir) +
                                       ", but they cannot be viewed, downloaded or printed: --explain " +
                                       path + " gives the reason");
        }
    }
}

} // namespace

void checkDirectories(const std::vector<Source>& sources, const Requests& requests, Findings& findings) {
    StorageTree tree(paths::kHome);
    for (const Source& source : sources) {
        if (source.line == 0)
            continue;
        checkExistence(source, tree, findings);
        checkModeIsFound(source, tree, findings);
    }
    checkDeliveries(sources, requests, findings);
}
