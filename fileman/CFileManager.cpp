#include "fileman/CFileManager.h"

#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/disk/StorageTree.h"
#include "fileman/load/LoadedList.h"

CFileManager* g_FileMan = nullptr;

CFileManager::CFileManager()
    : m_extensions{".html", ".png", ".jpg", ".jpeg", ".bmp", ".pcap"}, m_specialTypes{"opm", "screen",
                                                                                      "fiberscope", "odm",
                                                                                      "wsa"},
      m_home(paths::kHome), m_tree(std::make_unique<StorageTree>(m_home)),
      m_loaded(std::make_unique<LoadedList>()) {
    g_FileMan = this;
}

CFileManager::~CFileManager() {
    CFileManConf::finishScan();
    if (g_FileMan == this)
        g_FileMan = nullptr;
}

void CFileManager::forgetDisk() {
    // What is loaded points into the listings until its records are made.
    std::list<_ResultInfo*> records;
    m_loaded->getRecords(records);
    m_storedInfo.clear();
    m_tree = std::make_unique<StorageTree>(m_home);
}

void CFileManager::getFilter(_ResultFilter& filter) const {
    filter = m_filter;
}

void CFileManager::setFilter(const _ResultFilter& filter) {
    m_filter = filter;
    indexFilter();
}

void CFileManager::indexFilter() {
    m_modes = UniqueNames(m_filter.modes);
    m_tests = UniqueNames(m_filter.tests);
    m_ports = UniqueNames(m_filter.ports);
}

void CFileManager::clearLoaded() {
    m_loaded->clear();
}

void CFileManager::getLoadedResults(std::list<_ResultInfo*>& out) const {
    m_loaded->getRecords(out);
}

void CFileManager::forEachLoaded(const std::function<void(const RecordParts&)>& visitor) const {
    m_loaded->visit(visitor);
}

void CFileManager::addResultInfo(_ResultInfo* info) {
    info->id = makeUniqueId(info);
    m_loaded->add(info);
}

std::string CFileManager::makeUniqueId(const _ResultInfo* info) {
    std::string id;
    id.reserve(info->mode.size() + info->port.size() + info->test.size() + info->rsltype.size() +
               info->name.size() + 4);
    id.append(info->mode).append("_").append(info->port).append("_").append(info->test).append("_");
    id.append(info->rsltype).append("_").append(info->name);
    if (id.size() > kLongestId)
        id.resize(kLongestId);
    return id;
}
