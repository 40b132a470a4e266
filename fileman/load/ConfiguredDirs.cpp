#include "fileman/load/ConfiguredDirs.h"

#include <string>
#include <utility>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/load/LoadTrace.h"
#include "fileman/names/FlatModes.h"
#include "fileman/names/PortNames.h"
#include "fileman/names/TestTypeDirs.h"

namespace {

// Starts the source for the files of one type. It has no port yet.
FileSource sourceOf(const LoadInfo& info, std::string path, const std::string& type) {
    FileSource source;
    source.dir = std::move(path);
    source.record.module = info.module;
    source.record.mode = info.mode;
    source.record.test = CFileManConf::getTypeName(type);
    source.record.rsltype = halfWord(info.isResult != 0);
    source.record.type = type;
    return source;
}

} // namespace

// The configuration does not name the shape of a directory. It follows from scanTree and subDirs.
int ConfiguredDirs::load(const LoadInfo& info) {
    if (info.dir.empty())
        return 0;
    if (info.scanTree == 1)
        return loadTree(info);
    return info.subDirs.empty() ? loadFlat(info) : loadFixedDirs(info);
}

// Only two modes may have this shape. For any other mode the type is empty, and nothing is listed.
int ConfiguredDirs::loadFlat(const LoadInfo& info) {
    const std::string type = typeOfFlatMode(info.mode);
    if (type.empty() || !m_filter.passesTest(type))
        return 0;
    return m_files.list(sourceOf(info, entryPath(paths::kHome, info.dir), type));
}

// The list names type directories. Their files have no port.
int ConfiguredDirs::loadFixedDirs(const LoadInfo& info) {
    const std::string path = entryPath(paths::kHome, info.dir);
    int count = 0;
    for (const std::string& name : info.subDirs) {
        const std::string type = types::fromConfiguredDir(name);
        if (m_filter.passesTest(type))
            count += m_files.list(sourceOf(info, entryPath(path, name), type));
    }
    return count;
}

int ConfiguredDirs::loadTree(const LoadInfo& info) {
    const std::string path = entryPath(paths::kHome, info.dir);
    const Directory* const directory = m_tree.open(path);
    if (directory == nullptr)
        return 0;
    // Port names are compared, not directory names: "geport" in the list also allows "geport2".
    const NameSet knownPorts(ports::fromDirNames(info.subDirs));
    int count = 0;
    for (const DirEntry entry : *directory) {
        // The files are loaded once for each such entry, even if it is a file. This is intentional.
        if (types::isFiberMonitor(entry.name)) {
            count += m_special.loadFiberMonitor(info);
            continue;
        }
        const std::string name(entry.name);
        if (entry.type != EntryType::Directory || !ports::isPortDir(name))
            continue;
        const std::string port = ports::fromDirName(name);
        if (m_filter.passesPort(port) && knownPorts.contains(port))
            count += loadPortDir(info, entryPath(path, name), port);
    }
    return count;
}

int ConfiguredDirs::loadPortDir(const LoadInfo& info, const std::string& path, const std::string& port) {
    const Directory* const directory = m_tree.openListed(path);
    if (directory == nullptr)
        return 0;
    int count = 0;
    for (const DirEntry entry : *directory) {
        const std::string name(entry.name);
        if (entry.type != EntryType::Directory || !types::isTypeDir(name))
            continue;
        const std::string type = types::fromDirName(name);
        if (!m_filter.passesTest(type))
            continue;
        FileSource source = sourceOf(info, entryPath(path, name), type);
        source.isListed = true;
        source.record.port = port;
        count += m_files.list(std::move(source));
    }
    return count;
}

int ConfiguredDirs::loadCommonModule() {
    int count = 0;
    for (const auto& [name, option] : CFileManConf::getCommonModuleInfo()) {
        if (!m_tree.exists(entryPath(paths::kHome, option.dir_name)))
            continue;
        count += option.under_port_dir ? loadCommonTree(option) : loadCommonFlat(option);
    }
    return count;
}

int ConfiguredDirs::loadCommonTree(const CommonOptInfo& option) {
    const _ResultFilter& filter = m_filter.fields();
    const bool isResult = CCommUtils::isEquals(option.test_name, "Result") && filter.includeResults;
    if (!isResult && !(CCommUtils::isEquals(option.test_name, "Profile") && filter.includeProfiles))
        return 0;
    const Half half = isResult ? Half::Result : Half::Profile;
    const int count = load(portTreeInfo("Common", "", option.dir_name, option.list, half));
    trace::writeCommonCount(half, count);
    return count;
}

// These results have no mode and no port. A flat directory has no profiles.
int ConfiguredDirs::loadCommonFlat(const CommonOptInfo& option) {
    if (!m_filter.fields().includeResults || !m_filter.passesTest(option.key))
        return 0;
    FileSource source;
    source.dir = entryPath(paths::kHome, option.dir_name);
    source.storedInfo = StoredInfo::Companion;
    source.record.module = "Common";
    source.record.test = option.test_name;
    source.record.rsltype = halfWord(true);
    source.record.type = option.key;
    return m_files.list(std::move(source));
}
