#include "fileman-check/Explanation.h"

#include <optional>
#include <string_view>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "common/NameSet.h"
#include "conf/CFileManConf.h"
#include "fileman-check/Findings.h"
#include "fileman/disk/Directory.h"
#include "fileman/names/ListedFiles.h"
#include "fileman/names/PortNames.h"
#include "fileman/names/TestTypeDirs.h"

namespace {

using Components = std::vector<std::string>;

constexpr char kFits[] = "fits";

// Returns the directories between a source and the file, or nothing if the file is not below the source.
std::optional<Components> componentsBelow(const std::string& dir, const std::string& sourceDir) {
    if (dir != sourceDir && !CCommUtils::isStartsWith(dir, sourceDir + "/"))
        return std::nullopt;
    std::list<std::string> names;
    if (dir != sourceDir)
        CCommUtils::split(names, "/", dir.substr(sourceDir.size() + 1));
    return Components(names.begin(), names.end());
}

std::optional<EntryType> typeOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    std::optional<Directory> parent = readDirectory(path.substr(0, slash));
    return parent ? parent->find(path.substr(slash + 1)) : std::nullopt;
}

// Returns the reason why no list has the file, or an empty text if there is none.
std::string obstacleOfFile(const std::string& path) {
    const std::optional<EntryType> type = typeOf(path);
    const std::string name = path.substr(path.rfind('/') + 1);
    if (!type)
        return "there is no such file, or this user may not read its directory";
    if (*type == EntryType::Directory)
        return "it is a directory";
    if (*type != EntryType::RegularFile)
        return "it is a link, a FIFO, a socket or a device; only regular files are listed";
    if (!listed::hasExtension(name))
        return "files with its extension are not listed (upper and lower case differ)";
    if (listed::isLastConfiguration(name))
        return "it is the instrument's own last configuration, which is not listed";
    return {};
}

std::string typeVerdict(const std::string& type, const ActiveFilter& all) {
    if (all.passesTest(type))
        return kFits;
    return "its type has the key " + quoted(type) +
           ", which no category declares: only requests without a choice of tests "
           "list it, and it cannot be viewed, downloaded or printed";
}

std::string treeVerdict(const Source& source, const Components& below, const ActiveFilter& all) {
    if (!below.empty() && types::isFiberMonitor(below[0]))
        return all.namesTest("fmonitor")
                   ? "a directory of the fiber monitor: fmonitor-result and fmonitor-setup are listed"
                   : "no category has the key \"fmonitor\"";
    if (below.size() != 2)
        return "files must be in a port directory and a type directory below it";
    const std::string& portDir = below[0];
    if (!ports::isPortDir(portDir))
        return quoted(portDir) + " is not the name of a port directory";
    if (typeOf(entryPath(source.dir, portDir)) != EntryType::Directory)
        return quoted(portDir) + " is not a directory; a link to one does not count";
    const std::string port = ports::fromDirName(portDir);
    if (!NameSet(ports::fromDirNames(source.names)).contains(port))
        return "the list names no directory of the port " + quoted(port);
    if (!all.passesPort(port))
        return "no entry declares the port " + quoted(port) +
               ": only requests without a choice of ports list it";
    if (!types::isTypeDir(below[1]))
        return quoted(below[1]) + " is not the name of a type directory";
    if (typeOf(entryPath(entryPath(source.dir, portDir), below[1])) != EntryType::Directory)
        return quoted(below[1]) + " is not a directory; a link to one does not count";
    return typeVerdict(types::fromDirName(below[1]), all);
}

std::string fixedVerdict(const Source& source, const Components& below, const ActiveFilter& all) {
    if (below.size() != 1)
        return "files must be in one of the directories that the list names";
    if (!CCommUtils::isContains(source.names, below[0]))
        return "the list does not name " + quoted(below[0]);
    return typeVerdict(types::fromConfiguredDir(below[0]), all);
}

std::string modeVerdict(const Source& source, const ActiveFilter& all) {
    if (source.mode.empty())
        return kFits;
    if (!all.namesMode(source.mode))
        return "the section mode has no entry " + quoted(source.mode);
    if (!CFileManConf::isCurrentMode(source.mode))
        return "no directory name below /home stands for its mode: lists without a choice of modes leave it "
               "out";
    return kFits;
}

std::string verdict(const Source& source, const Components& below, const ActiveFilter& all) {
    std::string text;
    switch (source.shape) {
    case Source::Shape::Tree:
        text = treeVerdict(source, below, all);
        break;
    case Source::Shape::Fixed:
        text = fixedVerdict(source, below, all);
        break;
    case Source::Shape::Flat:
        text =
            below.empty() ? typeVerdict(source.type, all) : "only files in the directory itself are listed";
        break;
    case Source::Shape::Nothing:
        return "nothing is listed from there";
    }
    if (text != kFits)
        return text;
    if (source.isExtra && source.port.empty() && !all.fields().ports.empty())
        return "it has no port: every choice of ports leaves it out, and it cannot be viewed, downloaded or "
               "printed";
    return modeVerdict(source, all);
}

bool writeListed(std::FILE* out, const std::string& path, const Requests& requests) {
    bool isListed = false;
    for (std::size_t number = 0; number < Requests::kKinds; ++number) {
        const auto kind = static_cast<Requests::Kind>(number);
        const auto [first, last] = requests.rows(kind).equal_range(path);
        isListed |= first != last;
        if (first == last)
            std::fprintf(out, "  %s: no\n", Requests::title(kind));
        for (auto place = first; place != last; ++place) {
            const Requests::Row& row = place->second;
            std::fprintf(out, "  %s: yes, module %s, mode %s, test %s, port %s, %s\n", Requests::title(kind),
                         quoted(row.module).c_str(), quoted(row.mode).c_str(), quoted(row.test).c_str(),
                         quoted(row.port).c_str(), row.rsltype.c_str());
        }
    }
    return isListed;
}

bool isBelowHome(const std::string& path) {
    return CCommUtils::isStartsWith(path, std::string(paths::kHome) + "/");
}

} // namespace

bool explain(std::FILE* out, const std::string& path, const std::vector<Source>& sources,
             const Requests& requests) {
    std::fprintf(out, "%s\n", quoted(path).c_str());
    const bool isListed = writeListed(out, path, requests);
    const std::string obstacle = isBelowHome(path) ? obstacleOfFile(path) : "it is not below /home";
    if (!obstacle.empty() && isListed) {
        std::fprintf(
            out,
            "  built in, MTIE measurements: requests that name the type \"mtie\" list each as one item\n");
        return true;
    }
    if (!obstacle.empty()) {
        std::fprintf(out, "  the file: %s\n", obstacle.c_str());
        return isListed;
    }
    const ActiveFilter all = everything();
    const std::string dir = path.substr(0, path.rfind('/'));
    bool isCovered = false;
    for (const Source& source : sources) {
        const std::optional<Components> below = componentsBelow(dir, source.dir);
        if (!below)
            continue;
        isCovered = true;
        const std::string place = source.line == 0 ? "built in" : "line " + std::to_string(source.line);
        std::fprintf(out, "  %s, %s: %s\n", place.c_str(), source.title.c_str(),
                     verdict(source, *below, all).c_str());
    }
    if (!isCovered)
        std::fprintf(out, "  the document: it declares no directory that contains the file\n");
    return isListed;
}
