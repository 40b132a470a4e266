#include "fileman/scan/StartUpScan.h"

#include "common/CCommUtils.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"

void StartUpScan::start() {
    if (m_defers)
        m_isPending = true;
    else
        run();
}

void StartUpScan::finish() {
    if (m_isPending)
        run();
}

void StartUpScan::run() {
    m_isPending = false;
    m_modules.scanModules();
    m_vocabulary.scan(paths::kHome);
}

bool StartUpScan::willFindMode(const std::string& path, const std::string& mode) const {
    return m_isPending && m_tree.isListedDirectory(path) &&
           VocabularyScan::registersMode(paths::kHome, path, mode);
}

bool StartUpScan::willFindScreenType(const std::string& path) const {
    if (!m_isPending || !m_tree.isListedDirectory(path))
        return false;
    std::list<std::string> keys;
    CFileManConf::getTypeKeys(keys, CFileManConf::getTypeName("screen"));
    return CCommUtils::isContains(keys, "screen");
}
