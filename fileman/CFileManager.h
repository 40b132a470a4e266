#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "conf/ConfRecords.h"
#include "conf/ResultFilter.h"
#include "conf/ScanRecords.h"
#include "fileman/LoadInfo.h"
#include "fileman/ResultInfo.h"
#include "fileman/TestMode.h"
#include "fileman/load/LoadedList.h"

class CFileManager;

// The one result store of the process, set by its constructor; null before.
extern CFileManager* g_FileMan;

// The result store: scans the storage tree and loads what a filter selects into result records. This is its
// interface; the work is done in load/, scan/, names/ and disk/.
//
// The store reads every directory at most once from one scanFilters to the next and takes later answers from
// what it read: it is made for one request. Not for threads. Missing and unreadable directories are skipped
// in silence at every level; failures of the system get a line on standard error. Records come in the order
// of the directory listings and live until the process ends (the lists never own them).
class CFileManager {
public:
    CFileManager();
    ~CFileManager();
    CFileManager(const CFileManager&) = delete;
    CFileManager& operator=(const CFileManager&) = delete;

    // --- loading (load/LoadPipeline.h) ---

    // Everything that the configuration knows, whatever the filter said except for its modules.
    void loadAll(std::list<_ResultInfo*>& out);
    // The same, but only the records whose identifier is chosen, and no dates of the others.
    void loadChosen(std::list<_ResultInfo*>& out, const std::function<bool(const std::string& id)>& isChosen);
    void loadAllResults(std::list<_ResultInfo*>& out);
    void loadAllProfiles(std::list<_ResultInfo*>& out);
    // What the active filter selects.
    void loadResults(std::list<_ResultInfo*>& out);
    void loadProfiles(std::list<_ResultInfo*>& out);
    // The screenshots, appended to what is loaded already.
    void loadScreenShots(std::list<_ResultInfo*>& out);
    // loadAllResults without a list, for callers that look at the rows by forEachLoaded.
    void loadAllResults();

    void getFilter(_ResultFilter& filter) const;
    void setFilter(const _ResultFilter& filter);

    // Reads the configuration and scans the storage tree: once, before anything else.
    void scanFilters();
    // To be called before scanFilters: the scan waits until the store needs what it finds. Whoever looks at
    // the current lists of CFileManConf then calls finishScan first. scan/StartUpScan.h says why.
    void deferScan();
    void finishScan();

    // Empties the loaded list; the records stay.
    void clearLoaded();
    // Copies the loaded list.
    void getLoadedResults(std::list<_ResultInfo*>& out) const;
    // Shows each loaded record in order, without the memory that holding all of them takes.
    void forEachLoaded(const RowVisitor& visitor) const;
    // Throws std::out_of_range for a module that the configuration lacks, and changes nothing then. This is
    // intentional: it ends the request.
    void reloadResult();
    // These return the number of records added.
    int loadResult(LoadInfo& info);
    int loadCommonResult();

    // Gives the record its identifier and appends it to the loaded list.
    void addResultInfo(_ResultInfo* info);
    // "mode_port_test_rsltype_name", see RecordId.h.
    static std::string makeUniqueId(const _ResultInfo* info);

    // --- sources outside the regular tree (load/SpecialSources.h) ---

    int loadScreenShot();
    // index: position in the configuration's list of extra directories; past its end stands an empty entry.
    int loadExtraResult(int index);
    int loadFmonitorResult(const LoadInfo& info);
    int loadMtieResult();

    // --- scans (scan/ModuleScan.h, scan/VocabularyScan.h) ---

    // Records per configured module which types and ports the disk holds.
    void scanDir();
    void scanSubDir(LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    void scanCommonDir();
    void scanOtu3In100geDir();
    // Registers the modes, types and ports that the directory names below path stand for.
    void scanResultFilters(const std::string& path);

    // --- directory names (names/) ---

    // Appends the family's first-level directories.
    static void get1stLevelDirNames(std::list<std::string>& out, TestMode mode, bool isResult);
    static bool isDotOrDotDot(const char* name);
    static bool isValidPortDirName(const std::string& dirName);
    static bool isValidTypeDirName(const std::string& dirName);
    static std::string str2Port(const std::string& dirName, int suffixLen);
    static std::string str2Type(const std::string& dirName, int suffixLen);
    static std::string str2PortName(TestMode mode, const std::string& dirName, bool matchSuffix);
    static std::string str2PortNameOtux(bool isResult, const std::string& dirName, bool matchSuffix);
    static bool isNeedConvertPortName(TestMode mode, const std::string& dirName);
    static bool isModeMatched(TestMode mode, const std::string& modeName);
    // The instrument's own saved last configuration, which is not listed.
    static bool isAntiFileName(std::string_view fileName);
    // Appends every non-directory below dir, depth first in listing order.
    void listDir(const char* dir, std::list<std::string>& out);

    // --- test families (load/FamilyLoader.h): each returns the number of records added ---

    int loadEthernetResult(const _ModeInfo& mode);
    int loadEthernetProfile(const _ModeInfo& mode);
    int loadFiberResult(const _ModeInfo& mode);
    int loadFiberProfile(const _ModeInfo& mode);
    int loadSDHResult(const _ModeInfo& mode);
    int loadSDHProfile(const _ModeInfo& mode);
    int loadCommonResult(const _ModeInfo& mode);
    int loadCommonProfile(const _ModeInfo& mode);
    int loadOTUXResult(const _ModeInfo& mode);
    int loadOTUXProfile(const _ModeInfo& mode);
    int loadODU0Result(const _ModeInfo& mode);
    int loadODU0Profile(const _ModeInfo& mode);
    int loadCableResult(const _ModeInfo& mode);
    int loadCableProfile(const _ModeInfo& mode);
    int loadCPRILayerResult(const _ModeInfo& mode);
    int loadCPRILayerProfile(const _ModeInfo& mode);

private:
    void reload(bool results, bool profiles);

    struct Parts;
    std::unique_ptr<Parts> m_parts;
};
