#include "fileman/load/LoadPipeline.h"

#include <algorithm>

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/disk/Directory.h"
#include "fileman/names/MtieMode.h"

namespace {

// All directories that may contain files of the mode, as full paths.
std::list<std::string> dirsOfMode(const ModuleInfo& module, const ModeOptInfo& option) {
    std::list<std::string> dirs;
    for (const std::string& dir : {option.rslt_dir_name, option.prof_dir_name}) {
        if (!dir.empty())
            dirs.push_back(entryPath(paths::kHome, dir));
    }
    if (isMtieMode(module.name, option.mode_name))
        dirs.emplace_back(paths::kMtieDir);
    for (const ExtraDirInfo* const extra : CFileManConf::getExtraDirs(module.name, option.mode_name))
        dirs.push_back(entryPath(paths::kHome, extra->dir_name));
    return dirs;
}

} // namespace

LoadPipeline::Modules LoadPipeline::modules() const {
    Modules modules;
    for (const std::string& name : m_filter.modules())
        modules.push_back(&CFileManConf::getModuleInfo(name));
    return modules;
}

void LoadPipeline::load(const Modules& modules) {
    for (const ModuleInfo* const module : modules) {
        // The module "Common" has options instead of modes.
        if (CCommUtils::isEquals(module->name, "Common")) {
            m_dirs.loadCommonModule();
            continue;
        }
        for (const auto& [mode, option] : module->modeOpts) {
            if (isAccepted(*module, option))
                loadMode(*module, option);
        }
    }
}

// False also for a mode that has nothing to load: then the scan is not needed for the answer.
bool LoadPipeline::isAccepted(const ModuleInfo& module, const ModeOptInfo& option) {
    if (!m_filter.fields().modes.empty())
        return m_filter.namesMode(option.mode_name);
    std::list<std::string> dirs = dirsOfMode(module, option);
    dirs.remove_if([this](const std::string& path) { return !m_tree.exists(path); });
    if (dirs.empty())
        return false;
    // If a path predicts the answer yes, the scan of the whole tree is not needed.
    if (std::any_of(dirs.begin(), dirs.end(),
                    [&](const std::string& path) { return m_scan.willFindMode(path, option.mode_name); }))
        return true;
    m_scan.finish();
    return CFileManConf::isCurrentMode(option.mode_name);
}

// The order of these calls is the order of the rows in a list.
void LoadPipeline::loadMode(const ModuleInfo& module, const ModeOptInfo& option) {
    const _ResultFilter& filter = m_filter.fields();
    if (filter.includeResults) {
        m_dirs.load(loadInfoOf(module.name, option, Half::Result));
        if (isMtieMode(module.name, option.mode_name))
            m_special.loadMtie();
    }
    if (filter.includeProfiles)
        m_dirs.load(loadInfoOf(module.name, option, Half::Profile));
    for (const ExtraDirInfo* const extra : CFileManConf::getExtraDirs(module.name, option.mode_name))
        m_special.loadExtraDir(*extra);
}
