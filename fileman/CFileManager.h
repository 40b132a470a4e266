#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "common/UniqueNames.h"
#include "conf/ConfRecords.h"
#include "conf/ResultFilter.h"
#include "conf/ScanRecords.h"
#include "fileman/ResultInfo.h"
#include "fileman/disk/DateReader.h"

class CFileManager;
class Directory;
class LoadedList;
class StorageTree;
enum class Half;
enum class Scratch;
struct FamilyRule;
struct FileSource;

// The one result store of the process, set by its constructor; null before.
extern CFileManager* g_FileMan;

// The result store: scans the storage tree and loads what a filter selects into result records.
//
// The store reads every directory at most once from one scanFilters to the next and takes later answers from
// it: it is made for one request. Not for threads: dates are read with the working directory moved. Missing
// and unreadable directories are skipped in silence at every level; failures of the system get a line on
// standard error. Records come in the order of the directory listings and live until the process ends (the
// lists never own them).
class CFileManager {
public:
    CFileManager();
    ~CFileManager();
    CFileManager(const CFileManager&) = delete;
    CFileManager& operator=(const CFileManager&) = delete;

    // --- loading (LoadPipeline.cpp) ---

    // Everything that the configuration knows, whatever the filter said except for its modules.
    void loadAll(std::list<_ResultInfo*>& out);
    // The same, but only the records whose identifier is chosen; nobody asks for the dates of the others.
    void loadChosen(std::list<_ResultInfo*>& out, const std::function<bool(const std::string& id)>& isChosen);
    void loadAllResults(std::list<_ResultInfo*>& out);
    void loadAllProfiles(std::list<_ResultInfo*>& out);
    // What the active filter selects.
    void loadResults(std::list<_ResultInfo*>& out);
    void loadProfiles(std::list<_ResultInfo*>& out);
    // The screenshots, appended to what is loaded already.
    void loadScreenShots(std::list<_ResultInfo*>& out);
    // loadAllResults without a list, for callers that look at the records by forEachLoaded.
    void loadAllResults();

    void getFilter(_ResultFilter& filter) const;
    void setFilter(const _ResultFilter& filter);

    // Reads the configuration and scans the storage tree: once, before anything else. The scan takes place
    // when its outcome is first asked for, from this object, which therefore has to live as long as somebody
    // may ask.
    void scanFilters();
    // Empties the loaded list; the records stay.
    void clearLoaded();
    // Copies the loaded list.
    void getLoadedResults(std::list<_ResultInfo*>& out) const;
    // Shows each loaded record in order, without the memory that holding all of them takes. The parts are
    // valid during the call only; what is common, until something else is loaded.
    void forEachLoaded(const std::function<void(const RecordParts&)>& visitor) const;
    // Throws std::out_of_range for a module that the configuration lacks: wanted, it ends the request.
    void reloadResult();
    // These return the number of records added.
    int loadResult(LoadInfo& info);
    int loadCommonResult();

    // Gives the record its identifier and appends it to the loaded list.
    void addResultInfo(_ResultInfo* info);
    // "mode_port_test_rsltype_name", kLongestId bytes at most.
    static constexpr std::size_t kLongestId = 255;
    static std::string makeUniqueId(const _ResultInfo* info);

    // --- sources outside the regular tree (LoadSpecial.cpp) ---

    int loadScreenShot();
    // index: position in the configuration's list of extra directories; past its end stands an empty entry.
    int loadExtraResult(int index);
    int loadFmonitorResult(const LoadInfo& info);
    int loadMtieResult();

    // --- scans (ScanStorage.cpp, ScanVocabulary.cpp) ---

    // Records per configured module which types and ports the disk holds.
    void scanDir();
    void scanSubDir(LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    void scanCommonDir();
    void scanOtu3In100geDir();
    // Registers the modes, types and ports that the directory names below path stand for.
    void scanResultFilters(const std::string& path);

    // --- directory names (DirNames.cpp) ---

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

    // --- test families (LoadFamilies.cpp): each returns the number of records added ---

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
    // Whether the filter's list lets value pass; an empty one restricts nothing.
    bool passesTests(const std::string& type) const;
    bool passesPorts(const std::string& port) const;
    // To be called whenever the filter has changed.
    void indexFilter();
    // The next question reads the disk again; what is loaded stays.
    void forgetDisk();

    // --- the file step, the same for all sources (FileStep.cpp) ---

    // Lists the files of one directory that pass; returns the number of records added.
    int listFiles(FileSource source);
    bool isWanted(const FileSource& source, const Directory& directory, std::string_view fileName,
                  const _AdvanceInfo& named);
    // Whether an item passes the advanced filter of which named knows the name; what is stored at path is
    // read only when it can decide.
    bool matchesStoredInfo(const std::string& path, const _AdvanceInfo& named);

    // --- load passes (LoadPipeline.cpp) ---

    void selectEverything(bool results, bool profiles);
    // Whether the filter names the mode, or, when it names none, whether the mode was found on disk (every
    // mode, when none was found). A mode without anything to load may count as not wanted.
    bool isWantedMode(const ModuleInfo& module, const ModeOptInfo& option);
    void loadMode(const ModuleInfo& module, const ModeOptInfo& option);
    int loadExtraDir(const ExtraDirInfo& extra);
    int loadCommonByPort(const CommonOptInfo& option);
    int loadCommonFlat(const CommonOptInfo& option);
    int loadFlat(const LoadInfo& info);
    int loadFixedDirs(const LoadInfo& info);
    int loadTree(const LoadInfo& info);
    int loadPortDir(const LoadInfo& info, const std::string& path, const std::string& port);
    int loadTypeDir(const LoadInfo& info, const std::string& path, bool isListed, const std::string& port,
                    const std::string& type);

    // --- scans (ScanStorage.cpp, ScanVocabulary.cpp); true when there is something on disk ---

    bool scanMode(const ModuleInfo& module, const ModeOptInfo& option, ScanModuleToModeInfo& moduleScan);
    bool scanHalf(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    bool gatherSubDir(const LoadInfo& info, ScanModuleToModeInfo& moduleScan, ScanModeToPortInfo& modeScan);
    void registerDirectory(const std::string& path);
    bool registerModeDir(const std::string& name, const std::string& parent, const std::string& mode);
    void registerSuffixedModeDir(const std::string& name, const std::string& mode);
    void registerTypeOrPortDir(const std::string& name, const std::string& mode);
    void registerSdhDir(const std::string& name, const std::string& parent, const std::string& mode);

    // --- what a scan that was put off is bound to find, told without it; false where only the scan can
    //     tell ---

    bool showsMode(const std::string& path, const std::string& mode);
    bool showsScreenType(const std::string& path);

    // --- family walk (LoadFamilies.cpp) ---

    int loadFamily(TestMode family, Half half, const _ModeInfo& mode);
    int loadFamilyRoot(const FamilyRule& rule, const std::string& root, const std::string& mode);
    int loadFamilyPorts(const FamilyRule& rule, const std::string& path, const std::string& mode);
    int loadFamilyTypes(const FamilyRule& rule, const std::string& path, const std::string& mode,
                        const std::string& port);
    int loadStrippedTypes(const std::string& path, const std::string& mode, const std::string& port,
                          Scratch scratch);
    // To be called before passesKnown is asked: what was found on disk may have changed.
    void indexKnownTypes();
    // Whether the filter names the type, or, when it names none, whether the type was found on disk.
    bool passesKnown(const std::string& typeKey) const;

    _ResultFilter m_filter;
    UniqueNames m_modes; // of the filter, as the next two
    UniqueNames m_tests;
    UniqueNames m_ports;
    UniqueNames m_knownTypes;              // found on disk, for the families that ask
    std::list<std::string> m_extensions;   // file name endings that are listed
    std::list<std::string> m_specialTypes; // type directories without a suffix
    std::string m_home;
    // Whether the vocabulary scan is behind a "kts-" mode directory, whose type directories carry one more
    // letter.
    bool typePrefixFlag = false;
    std::unique_ptr<StorageTree> m_tree;
    std::unique_ptr<LoadedList> m_loaded;
    DateReader m_dates;
    bool m_readsDates = true; // with each listed file, not when somebody needs one
    std::unordered_map<std::string, _AdvanceInfo> m_storedInfo; // by path, as far as read
};
