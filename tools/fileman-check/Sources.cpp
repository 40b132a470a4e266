#include "fileman-check/Sources.h"

#include <algorithm>
#include <set>
#include <utility>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "conf/xml/XmlFile.h"
#include "fileman-check/Findings.h"
#include "fileman-check/LinedDocument.h"
#include "fileman/LoadInfo.h"
#include "fileman/disk/Directory.h"
#include "fileman/names/FlatModes.h"
#include "fileman/names/MtieMode.h"

namespace {

using xml::attribute;

class SourceReader {
public:
    explicit SourceReader(Findings& findings) : m_findings(findings) {}

    void readSection(const TiXmlElement& section);
    void addBuiltIn();
    std::vector<Source> take() { return std::move(m_sources); }

private:
    void readModule(const TiXmlElement& module);
    void readMode(const ModuleInfo& module, const TiXmlElement& mode);
    void readHalf(const ModuleInfo& module, const ModeOptInfo& option, Half half, int line);
    void readCommon(const TiXmlElement& entry);
    void readExtra(const TiXmlElement& entry);
    void add(Source source);

    Findings& m_findings;
    std::vector<Source> m_sources;
    std::set<std::string> m_modules;
    std::set<std::string> m_commonNames;
};

std::string titleOf(Half half, const std::string& module, const std::string& mode) {
    return std::string(half == Half::Result ? "results" : "profiles") + " of module " + quoted(module) +
           (mode.empty() ? "" : ", mode " + quoted(mode));
}

Source sourceOf(const LoadInfo& info, int line) {
    Source source;
    source.line = line;
    source.title = titleOf(info.isResult != 0 ? Half::Result : Half::Profile, info.module, info.mode);
    source.dir = entryPath(paths::kHome, info.dir);
    source.module = info.module;
    source.mode = info.mode;
    source.names = info.subDirs;
    if (info.scanTree == 1)
        source.shape = Source::Shape::Tree;
    else if (!info.subDirs.empty())
        source.shape = Source::Shape::Fixed;
    else
        source.type = typeOfFlatMode(info.mode);
    return source;
}

void SourceReader::add(Source source) {
    m_sources.push_back(std::move(source));
}

void SourceReader::readHalf(const ModuleInfo& module, const ModeOptInfo& option, Half half, int line) {
    const LoadInfo info = loadInfoOf(module.name, option, half);
    if (info.dir.empty()) {
        m_findings.add(line,
                       titleOf(half, module.name, option.mode_name) + ": no directory, so nothing is listed");
        return;
    }
    Source source = sourceOf(info, line);
    if (source.shape == Source::Shape::Flat && source.type.empty()) {
        source.shape = Source::Shape::Nothing;
        m_findings.add(line,
                       source.title +
                           ": files that lie in the directory itself have no type in this mode, so nothing "
                           "is listed; name type directories in the list, or say under_port_dir=\"true\"");
    }
    add(std::move(source));
}

void SourceReader::readMode(const ModuleInfo& module, const TiXmlElement& mode) {
    const auto option = module.modeOpts.find(attribute(mode, "mode_name"));
    if (option == module.modeOpts.end())
        return;
    std::set<std::string> seen;
    xml::forEachChild(mode, [&](const TiXmlElement& half) {
        const std::string word = attribute(half, "test_name");
        const bool isResult = CCommUtils::isEquals(word, "Result");
        if (!isResult && !CCommUtils::isEquals(word, "Profile")) {
            m_findings.add(half.Row(),
                           "test_name " + quoted(word) + " is ignored: it is neither Result nor Profile");
            return;
        }
        if (!seen.insert(halfWord(isResult)).second) {
            m_findings.add(half.Row(),
                           "a second half of the same kind replaces the directory of the first one");
            return;
        }
        readHalf(module, option->second, isResult ? Half::Result : Half::Profile, half.Row());
    });
}

void SourceReader::readCommon(const TiXmlElement& entry) {
    const std::string name = attribute(entry, "test_name");
    const auto found = CFileManConf::getCommonModuleInfo().find(name);
    if (found == CFileManConf::getCommonModuleInfo().end() || !m_commonNames.insert(name).second)
        return;
    const CommonOptInfo& option = found->second;
    const bool isResult = CCommUtils::isEquals(name, "Result");
    if (option.under_port_dir) {
        const Half half = isResult ? Half::Result : Half::Profile;
        Source source = sourceOf(portTreeInfo("Common", "", option.dir_name, option.list, half), entry.Row());
        if (!isResult && !CCommUtils::isEquals(name, "Profile")) {
            source.shape = Source::Shape::Nothing;
            m_findings.add(
                entry.Row(),
                "nothing is listed: only the entries Result and Profile may have port directories");
        }
        add(std::move(source));
        return;
    }
    Source source;
    source.line = entry.Row();
    source.title = "entry " + quoted(name) + " of module \"Common\"";
    source.dir = entryPath(paths::kHome, option.dir_name);
    source.module = "Common";
    source.type = option.key;
    add(std::move(source));
}

void SourceReader::readModule(const TiXmlElement& module) {
    const std::string name = attribute(module, "name");
    const bool isFirst = m_modules.insert(name).second;
    if (CCommUtils::isEquals(name, "Common")) {
        xml::forEachChild(module, [this](const TiXmlElement& entry) { readCommon(entry); });
        return;
    }
    const auto found = CFileManConf::getModulesInfo().find(name);
    if (!isFirst || found == CFileManConf::getModulesInfo().end())
        return;
    std::set<std::string> modes;
    xml::forEachChild(module, [&](const TiXmlElement& mode) {
        if (modes.insert(attribute(mode, "mode_name")).second)
            readMode(found->second, mode);
    });
}

void SourceReader::readExtra(const TiXmlElement& entry) {
    Source source;
    source.isExtra = true;
    source.line = entry.Row();
    source.dir = entryPath(paths::kHome, attribute(entry, "dir_name"));
    source.module = attribute(entry, "module");
    source.mode = attribute(entry, "mode");
    source.type = attribute(entry, "key");
    source.port = attribute(entry, "port");
    source.title = "extra directory of module " + quoted(source.module) + ", mode " + quoted(source.mode);
    const auto& modules = CFileManConf::getModulesInfo();
    const bool isReached = std::any_of(modules.begin(), modules.end(), [&](const auto& module) {
        return CCommUtils::isEquals(module.first, source.module) &&
               std::any_of(
                   module.second.modeOpts.begin(), module.second.modeOpts.end(),
                   [&](const auto& option) { return CCommUtils::isEquals(option.first, source.mode); });
    });
    if (!isReached) {
        source.shape = Source::Shape::Nothing;
        m_findings.add(source.line, source.title + ": no module has this mode, so nothing is listed");
    }
    add(std::move(source));
}

void SourceReader::readSection(const TiXmlElement& section) {
    if (section.ValueStr() == "module")
        xml::forEachChild(section, [this](const TiXmlElement& module) { readModule(module); });
    else if (section.ValueStr() == "extraDir")
        xml::forEachChild(section, [this](const TiXmlElement& entry) { readExtra(entry); });
}

void SourceReader::addBuiltIn() {
    Source screen;
    screen.title = "screenshots";
    screen.dir = paths::kScreenDir;
    screen.module = "Common";
    screen.type = "screen";
    const bool isDeclared = std::any_of(m_sources.begin(), m_sources.end(), [&](const Source& source) {
        return source.dir == screen.dir && source.shape == Source::Shape::Flat &&
               source.module == screen.module && source.type == screen.type;
    });
    if (!isDeclared)
        m_findings.add(
            0, "screenshots are listed, but cannot be viewed or downloaded: the module \"Common\" needs an "
               "entry "
               "with test_name=\"Screen\" key=\"screen\" dir_name=\"ktb/screen\" under_port_dir=\"false\"");
    add(std::move(screen));
}

} // namespace

std::vector<Source> readSources(const LinedDocument& document, Findings& findings) {
    SourceReader reader(findings);
    xml::forEachChild(*document.filter(), [&](const TiXmlElement& section) { reader.readSection(section); });
    reader.addBuiltIn();
    return reader.take();
}

ActiveFilter everything() {
    ActiveFilter filter;
    filter.selectEverything(true, true);
    return filter;
}
