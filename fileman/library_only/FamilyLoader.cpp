#include "fileman/library_only/FamilyLoader.h"

#include <utility>

#include "common/CCommUtils.h"
#include "conf/CFileManConf.h"
#include "fileman/library_only/FamilyRoots.h"
#include "fileman/names/PortNames.h"
#include "fileman/names/TestTypeDirs.h"

namespace {

// Returns the port that a record shows. The filter has tested the port name before.
std::string recordPort(const FamilyRule& rule, const std::string& dirName, const std::string& port) {
    if (rule.port == PortFrom::Dir || !ports::showsLabel(rule.family, dirName))
        return port;
    return rule.port == PortFrom::DirLabelOtux ? ports::labelOfOtux(false, dirName, true)
                                               : ports::labelOf(rule.family, dirName, true);
}

std::string rootPort(const FamilyRule& rule, const std::string& root) {
    if (rule.port == PortFrom::RootOtux)
        return ports::labelOfOtux(true, CCommUtils::isContains(root, "/p1/") ? "p1" : "p2", true);
    return ports::labelOf(rule.family, CCommUtils::dirName(root), true);
}

FileSource startSource(const std::string& mode, Half half, LastConfiguration lastConfiguration) {
    FileSource source;
    source.storedInfo = StoredInfo::Itself;
    source.lastConfiguration = lastConfiguration;
    source.record.mode = mode;
    source.record.rsltype = halfWord(half == Half::Result);
    return source;
}

} // namespace

template<typename Visitor>
int FamilyLoader::forEachDir(const std::string& path, Visitor&& visit) {
    const Directory* const directory = m_tree.open(path);
    if (directory == nullptr)
        return 0;
    int count = 0;
    for (const DirEntry entry : *directory) {
        if (entry.type == EntryType::Directory)
            count += visit(std::string(entry.name));
    }
    return count;
}

// If the filter names types, the known types are not needed, and the scan does not run for them.
void FamilyLoader::indexKnownTypes() {
    if (!m_filter.fields().tests.empty())
        return;
    m_scan.finish();
    std::list<std::string> known;
    CFileManConf::getCurrentTypeKeys(known);
    m_knownTypes = NameSet(known);
}

bool FamilyLoader::passesKnown(const std::string& typeKey) const {
    return m_filter.fields().tests.empty() ? m_knownTypes.contains(typeKey) : m_filter.namesTest(typeKey);
}

int FamilyLoader::listType(FileSource started, const std::string& dir, const std::string& type) {
    started.dir = dir;
    started.record.test = CFileManConf::getTypeName(type);
    started.record.type = type;
    return m_files.list(std::move(started));
}

int FamilyLoader::load(TestMode family, Half half, const _ModeInfo& mode) {
    const FamilyRule& rule = *findFamilyRule(family, half);
    const std::string& dirName = half == Half::Result ? mode.rslt_dir_name : mode.prof_dir_name;
    if (rule.modeDir != ModeDir::None && dirName.empty())
        return 0;
    if (rule.types == Types::Known)
        indexKnownTypes();
    std::list<std::string> roots;
    families::appendRoots(roots, family, half == Half::Result);
    int count = 0;
    for (const std::string& root : roots) {
        const std::string path = rule.modeDir == ModeDir::Append ? entryPath(root, dirName) : root;
        count += loadRoot(rule, path, mode.name);
    }
    return count;
}

int FamilyLoader::loadRoot(const FamilyRule& rule, const std::string& path, const std::string& mode) {
    switch (rule.port) {
    case PortFrom::Dir:
    case PortFrom::DirLabel:
    case PortFrom::DirLabelOtux:
        return loadPorts(rule, path, mode);
    case PortFrom::Root:
    case PortFrom::RootOtux: {
        const std::string port = rootPort(rule, path);
        return m_filter.passesPort(port) ? loadTypes(rule, path, mode, port) : 0;
    }
    case PortFrom::None:
        break;
    }
    return loadTypes(rule, path, mode, "");
}

int FamilyLoader::loadPorts(const FamilyRule& rule, const std::string& path, const std::string& mode) {
    return forEachDir(path, [&](const std::string& name) {
        const std::string port = ports::fromDirName(name);
        if (!ports::isPortDir(name) || !m_filter.passesPort(port))
            return 0;
        return loadTypes(rule, entryPath(path, name), mode, recordPort(rule, name, port));
    });
}

int FamilyLoader::loadTypes(const FamilyRule& rule, const std::string& path, const std::string& mode,
                            const std::string& port) {
    FileSource started = startSource(mode, rule.half, rule.lastConfiguration);
    started.record.port = port;
    const auto passes = [&](const std::string& key) {
        return rule.types == Types::Known ? passesKnown(key) : m_filter.passesTest(key);
    };
    if (rule.typeKeys == nullptr)
        return passes("bert") ? listType(started, path, "bert") : 0;
    return forEachDir(path, [&](const std::string& name) {
        const std::optional<TypeKeys> keys = rule.typeKeys(name);
        if (!keys || !passes(keys->filter))
            return 0;
        FileSource source = started;
        if (isCapture(rule, keys->record))
            source.record.rsltype = "PCAP";
        return listType(std::move(source), entryPath(path, name), keys->record);
    });
}

int FamilyLoader::loadStrippedTypes(const std::string& path, const FileSource& started) {
    return forEachDir(path, [&](const std::string& name) {
        const std::string type = types::fromDirName(name);
        if (!types::isTypeDir(name) || !m_filter.passesTest(type))
            return 0;
        return listType(started, entryPath(path, name), type);
    });
}

int FamilyLoader::loadCommonResults(const _ModeInfo& mode) {
    if (mode.rslt_dir_name.empty())
        return 0;
    std::list<std::string> roots;
    families::appendRoots(roots, TM_COMMON, true);
    const FileSource started = startSource(mode.name, Half::Result, LastConfiguration::Keep);
    int count = 0;
    for (const std::string& root : roots) {
        const std::string path = entryPath(root, mode.rslt_dir_name);
        count += forEachDir(path, [&](const std::string& name) {
            return loadCommonDir(entryPath(path, name), name, started);
        });
    }
    return count;
}

int FamilyLoader::loadCommonDir(const std::string& path, const std::string& name, const FileSource& started) {
    if (isBesidePorts(name))
        return m_filter.passesTest(name) ? listType(started, path, name) : 0;
    FileSource source = started;
    source.record.port = ports::fromDirName(name);
    if (!ports::isPortDir(name) || !m_filter.passesPort(source.record.port))
        return 0;
    return loadStrippedTypes(path, source);
}

int FamilyLoader::loadOdu0Results(const _ModeInfo& mode) {
    indexKnownTypes();
    std::list<std::string> roots;
    families::appendRoots(roots, TM_ODU0, true);
    const FileSource started = startSource(mode.name, Half::Result, LastConfiguration::Keep);
    int count = 0;
    for (const std::string& root : roots) {
        count += forEachDir(
            root, [&](const std::string& name) { return loadOdu0Dir(entryPath(root, name), name, started); });
    }
    return count;
}

// Directories of bit-error tests are beside the port directories. Their own name gives the port.
int FamilyLoader::loadOdu0Dir(const std::string& path, const std::string& name, const FileSource& started) {
    FileSource source = started;
    const bool isFirst = CCommUtils::isContains(name, "odu0p1-bert");
    if (isFirst || CCommUtils::isContains(name, "odu0p2-bert")) {
        source.record.port = ports::labelOfOtux(true, isFirst ? "p1" : "p2", true);
        return m_filter.passesPort(source.record.port) && passesKnown("bert") ? listType(source, path, "bert")
                                                                              : 0;
    }
    source.lastConfiguration = LastConfiguration::Drop;
    source.record.port = ports::fromDirName(name);
    if (!ports::isPortDir(name) || !m_filter.passesPort(source.record.port))
        return 0;
    if (ports::showsLabel(TM_ODU0, name))
        source.record.port = ports::labelOf(TM_ODU0, name, true);
    return loadStrippedTypes(path, source);
}
