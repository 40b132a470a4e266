#include "fileman/CFileManager.h"

#include <iterator>

#include "common/CCommUtils.h"
#include "common/DotEntry.h"
#include "common/FixedPaths.h"
#include "conf/CFileManConf.h"
#include "fileman/RecordId.h"
#include "fileman/library_only/FamilyLoader.h"
#include "fileman/library_only/FamilyRoots.h"
#include "fileman/load/LoadPipeline.h"
#include "fileman/names/ListedFiles.h"
#include "fileman/names/PortNames.h"
#include "fileman/names/TestTypeDirs.h"

CFileManager* g_FileMan = nullptr;

namespace {

void listDirectory(const std::string& path, std::list<std::string>& out) {
    const std::optional<Directory> directory = readDirectory(path);
    if (!directory)
        return;
    for (const DirEntry entry : *directory) {
        const std::string listed = entryPath(path, entry.name);
        if (entry.type == EntryType::Directory)
            listDirectory(listed, out);
        else
            out.push_back(listed);
    }
}

} // namespace

// Each part uses only the parts above it.
struct CFileManager::Parts {
    StorageTree tree{paths::kHome};
    StartUpScan scan{tree};
    ActiveFilter filter;
    LoadedList loaded;
    FileLister files{tree, filter, loaded};
    SpecialSources special{tree, filter, loaded, files, scan};
    ConfiguredDirs dirs{tree, filter, files, special};
    LoadPipeline pipeline{tree, filter, dirs, special, scan};
    FamilyLoader families{tree, filter, files, scan};
    bool isConfigurationBroken = false;
};

CFileManager::CFileManager() : m_parts(std::make_unique<Parts>()) {
    g_FileMan = this;
}

CFileManager::~CFileManager() {
    if (g_FileMan == this)
        g_FileMan = nullptr;
}

// --- loading ---

void CFileManager::loadAll(std::list<_ResultInfo*>& out) {
    reload(true, true);
    getLoadedResults(out);
}

void CFileManager::loadChosen(std::list<_ResultInfo*>& out,
                              const std::function<bool(const std::string& id)>& isChosen) {
    const FileLister::DatesLater datesLater(m_parts->files);
    reload(true, true);
    m_parts->loaded.keepOnly(isChosen);
    getLoadedResults(out);
}

void CFileManager::loadAllResults() {
    reload(true, false);
}

void CFileManager::loadAllResults(std::list<_ResultInfo*>& out) {
    loadAllResults();
    getLoadedResults(out);
}

void CFileManager::loadAllProfiles(std::list<_ResultInfo*>& out) {
    reload(false, true);
    getLoadedResults(out);
}

void CFileManager::loadResults(std::list<_ResultInfo*>& out) {
    reloadResult();
    getLoadedResults(out);
}

// The same as loadResults: in both the flags of the filter decide what is loaded.
void CFileManager::loadProfiles(std::list<_ResultInfo*>& out) {
    loadResults(out);
}

void CFileManager::loadScreenShots(std::list<_ResultInfo*>& out) {
    loadScreenShot();
    getLoadedResults(out);
}

// The modules are looked up first, so that a missing module changes nothing.
void CFileManager::reload(bool results, bool profiles) {
    const LoadPipeline::Modules modules = m_parts->pipeline.modules();
    m_parts->filter.selectEverything(results, profiles);
    clearLoaded();
    m_parts->pipeline.load(modules);
}

void CFileManager::reloadResult() {
    const LoadPipeline::Modules modules = m_parts->pipeline.modules();
    clearLoaded();
    m_parts->pipeline.load(modules);
}

int CFileManager::loadResult(LoadInfo& info) {
    return m_parts->dirs.load(info);
}

int CFileManager::loadCommonResult() {
    return m_parts->dirs.loadCommonModule();
}

void CFileManager::getFilter(_ResultFilter& filter) const {
    filter = m_parts->filter.fields();
}

void CFileManager::setFilter(const _ResultFilter& filter) {
    m_parts->filter.set(filter);
}

void CFileManager::clearLoaded() {
    m_parts->loaded.clear();
}

void CFileManager::getLoadedResults(std::list<_ResultInfo*>& out) const {
    m_parts->loaded.getRecords(out);
}

void CFileManager::forEachLoaded(const RowVisitor& visitor) const {
    m_parts->loaded.visit(visitor);
}

std::size_t CFileManager::unreadPlaces() const {
    return m_parts->tree.failures() + (m_parts->isConfigurationBroken ? 1 : 0);
}

void CFileManager::addResultInfo(_ResultInfo* info) {
    info->id = makeUniqueId(info);
    m_parts->loaded.add(info);
}

std::string CFileManager::makeUniqueId(const _ResultInfo* info) {
    return makeId(*info);
}

int CFileManager::loadScreenShot() {
    return m_parts->special.loadScreenShots();
}

int CFileManager::loadExtraResult(int index) {
    const std::list<ExtraDirInfo>& extras = CFileManConf::getExtraDirList();
    const bool isDeclared = index >= 0 && static_cast<std::size_t>(index) < extras.size();
    return m_parts->special.loadExtraDir(isDeclared ? *std::next(extras.begin(), index) : ExtraDirInfo());
}

int CFileManager::loadFmonitorResult(const LoadInfo& info) {
    return m_parts->special.loadFiberMonitor(info);
}

int CFileManager::loadMtieResult() {
    return m_parts->special.loadMtie();
}

// --- scans ---

void CFileManager::scanFilters() {
    finishScan();
    // The loaded list points into the listings. So its records are made before the listings are forgotten.
    std::list<_ResultInfo*> records;
    getLoadedResults(records);
    m_parts->files.advanced().forget();
    m_parts->tree.forget();
    const std::string document = CFileManConf::getConfFileName();
    m_parts->isConfigurationBroken = !CFileManConf::readConf(document) && CCommUtils::isFileExists(document);
    m_parts->scan.start();
}

void CFileManager::deferScan() {
    m_parts->scan.deferNext();
}

void CFileManager::finishScan() {
    m_parts->scan.finish();
}

void CFileManager::scanDir() {
    m_parts->scan.modules().scanModules();
}

void CFileManager::scanSubDir(LoadInfo& info, ScanModuleToModeInfo& moduleScan,
                              ScanModeToPortInfo& modeScan) {
    m_parts->scan.modules().scanDirectory(info, moduleScan, modeScan);
}

void CFileManager::scanCommonDir() {
    m_parts->scan.modules().scanCommonModule();
}

void CFileManager::scanOtu3In100geDir() {
    m_parts->scan.modules().scanOtu3();
}

void CFileManager::scanResultFilters(const std::string& path) {
    m_parts->scan.vocabulary().scan(path);
}

// --- directory names ---

void CFileManager::get1stLevelDirNames(std::list<std::string>& out, TestMode mode, bool isResult) {
    families::appendRoots(out, mode, isResult);
}

bool CFileManager::isDotOrDotDot(const char* name) {
    return name != nullptr && isDotEntry(name);
}

bool CFileManager::isValidPortDirName(const std::string& dirName) {
    return ports::isPortDir(dirName);
}

bool CFileManager::isValidTypeDirName(const std::string& dirName) {
    return types::isTypeDir(dirName);
}

std::string CFileManager::str2Port(const std::string& dirName, int suffixLen) {
    return ports::fromDirName(dirName, suffixLen);
}

std::string CFileManager::str2Type(const std::string& dirName, int suffixLen) {
    return types::fromDirName(dirName, suffixLen);
}

std::string CFileManager::str2PortName(TestMode mode, const std::string& dirName, bool matchSuffix) {
    return ports::labelOf(mode, dirName, matchSuffix);
}

std::string CFileManager::str2PortNameOtux(bool isResult, const std::string& dirName, bool matchSuffix) {
    return ports::labelOfOtux(isResult, dirName, matchSuffix);
}

bool CFileManager::isNeedConvertPortName(TestMode mode, const std::string& dirName) {
    return ports::showsLabel(mode, dirName);
}

bool CFileManager::isModeMatched(TestMode mode, const std::string& modeName) {
    return families::hasMode(mode, modeName);
}

bool CFileManager::isAntiFileName(std::string_view fileName) {
    return listed::isLastConfiguration(fileName);
}

void CFileManager::listDir(const char* dir, std::list<std::string>& out) {
    if (dir != nullptr)
        listDirectory(dir, out);
}

// --- test families ---

int CFileManager::loadEthernetResult(const _ModeInfo& mode) {
    return m_parts->families.load(TM_ETHERNET, Half::Result, mode);
}

int CFileManager::loadEthernetProfile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_ETHERNET, Half::Profile, mode);
}

int CFileManager::loadFiberResult(const _ModeInfo& mode) {
    return m_parts->families.load(TM_FIBER_CHANNEL, Half::Result, mode);
}

int CFileManager::loadFiberProfile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_FIBER_CHANNEL, Half::Profile, mode);
}

int CFileManager::loadSDHResult(const _ModeInfo& mode) {
    return m_parts->families.load(TM_SDH, Half::Result, mode);
}

int CFileManager::loadSDHProfile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_SDH, Half::Profile, mode);
}

int CFileManager::loadCommonResult(const _ModeInfo& mode) {
    return m_parts->families.loadCommonResults(mode);
}

int CFileManager::loadCommonProfile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_COMMON, Half::Profile, mode);
}

int CFileManager::loadOTUXResult(const _ModeInfo& mode) {
    return m_parts->families.load(TM_OTUX, Half::Result, mode);
}

int CFileManager::loadOTUXProfile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_OTUX, Half::Profile, mode);
}

int CFileManager::loadODU0Result(const _ModeInfo& mode) {
    return m_parts->families.loadOdu0Results(mode);
}

int CFileManager::loadODU0Profile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_ODU0, Half::Profile, mode);
}

int CFileManager::loadCableResult(const _ModeInfo& mode) {
    return m_parts->families.load(TM_CABLE, Half::Result, mode);
}

int CFileManager::loadCableProfile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_CABLE, Half::Profile, mode);
}

int CFileManager::loadCPRILayerResult(const _ModeInfo& mode) {
    return m_parts->families.load(TM_CPRI, Half::Result, mode);
}

int CFileManager::loadCPRILayerProfile(const _ModeInfo& mode) {
    return m_parts->families.load(TM_CPRI, Half::Profile, mode);
}
