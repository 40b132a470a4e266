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

// The one result store of the process. Its constructor sets this pointer; before that it is null.
extern CFileManager* g_FileMan;

// The result store: scans the storage tree, and loads the records that a filter selects. This class is the
// interface; the classes in load/, scan/, names/ and disk/ do the work.
//
// The store serves one request. Between two calls of scanFilters it reads each directory at most once and
// remembers it. It is not safe for use by several threads. A missing or unreadable directory is skipped
// silently at every level; a failure of the system is reported on standard error. Records are in the order of
// the directory listings. They live until the process ends; the lists do not own them.
class CFileManager {
public:
    CFileManager();
    ~CFileManager();
    CFileManager(const CFileManager&) = delete;
    CFileManager& operator=(const CFileManager&) = delete;

    // --- loading (load/LoadPipeline.h) ---

    // Loads everything that the configuration declares. Of the filter only the modules count.
    void loadAll(std::list<_ResultInfo*>& out);
    // The same, but keeps only the records whose identifier is chosen. Dates of the others are not read.
    void loadChosen(std::list<_ResultInfo*>& out, const std::function<bool(const std::string& id)>& isChosen);
    void loadAllResults(std::list<_ResultInfo*>& out);
    void loadAllProfiles(std::list<_ResultInfo*>& out);
    // These load what the active filter selects.
    void loadResults(std::list<_ResultInfo*>& out);
    void loadProfiles(std::list<_ResultInfo*>& out);
    // Adds the screenshots to the loaded list.
    void loadScreenShots(std::list<_ResultInfo*>& out);
    // loadAllResults without a list. For callers that read the rows by forEachLoaded.
    void loadAllResults();

    void getFilter(_ResultFilter& filter) const;
    void setFilter(const _ResultFilter& filter);

    // Reads the configuration and scans the storage tree. Call it once, before anything else.
    void scanFilters();
    // Call this before scanFilters to delay the scan until the store needs its result. Then finishScan must
    // be called before the current lists of CFileManConf are read. scan/StartUpScan.h gives the reason.
    void deferScan();
    void finishScan();

    // Clears the loaded list. The records stay in memory.
    void clearLoaded();
    // Copies the loaded list.
    void getLoadedResults(std::list<_ResultInfo*>& out) const;
    // Calls visitor with the row of each loaded record, in order. It does not make the records in memory.
    void forEachLoaded(const RowVisitor& visitor) const;
    // Returns how many places of the storage could not be read so far, the configuration document included. A
    // missing place is not counted.
    std::size_t unreadPlaces() const;
    // Loads what the active filter selects. Throws std::out_of_range, and changes nothing, for a module that
    // the configuration lacks. This is intentional: it ends the request.
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
    // index: position in the configuration's list of extra directories. Any other number is an empty entry.
    int loadExtraResult(int index);
    int loadFmonitorResult(const LoadInfo& info);
    int loadMtieResult();

    // --- scans (scan/ModuleScan.h, scan/VocabularyScan.h) ---

    // Records for each configured module which types and ports are on disk.
    void scanDir();
    void scanSubDir(LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    void scanCommonDir();
    void scanOtu3In100geDir();
    // Registers the modes, types and ports that the names of path and of all directories below it mean.
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
    // Appends every entry below dir that is not a directory, depth first, in listing order.
    void listDir(const char* dir, std::list<std::string>& out);

    // --- test families (library_only/FamilyLoader.h): each returns the number of records added ---

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
