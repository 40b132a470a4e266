#pragma once

#include <list>
#include <map>
#include <string>
#include <vector>

#include "conf/ConfRecords.h"
#include "conf/ResultFilter.h"
#include "conf/ScanRecords.h"

class CompanionBudget;
class TiXmlDocument;

// The document that CFileManConf::loadConf keeps in memory; null when there is none.
extern TiXmlDocument* g_pXmlDoc;

// The instrument's result configuration. It holds the names that the document declares, the lists of names
// that were found on disk, and the filter state that the document stores. All functions are static. Their
// state belongs to the process and has no lock.
//
// A lookup ignores letter case, takes the first match in key order, and returns "" when nothing matches.
class CFileManConf {
public:
    // Sections of the primary filter. The numbers are part of the interface.
    enum FilterType : int { FT_CLASS = 0, FT_MODULE = 1, FT_MODE = 2, FT_TYPE = 3, FT_PORT = 4 };

    // --- the document (ConfDocument.cpp) ---

    static std::string getConfPath();
    static std::string getConfFileName();
    // Adds the document's entries to the vocabulary. The first entry of a key stays. Returns false when the
    // document is missing, does not parse or has no filter element; then the vocabulary does not change.
    static bool readConf(const std::string& path);
    // Parses the document and keeps it in g_pXmlDoc. Returns whether it parsed; it is kept in both cases.
    // Does nothing and returns true when a document is already kept.
    static bool loadConf(const std::string& path);
    static void releaseConf();
    // Whether value is exactly "true".
    static bool isChecked(const std::string& value);

    // --- names, labels, keys and directory names (ConfNames.cpp) ---

    // The mode whose result or profile directory has this name. The exact word "ktr" gives the first mode.
    // This is intentional.
    static std::string getModeName(const std::string& dirName);
    static std::string getTypeName(const std::string& typeKey);
    static std::string getPortName(const std::string& portKey);
    static std::string modeName2Label(const std::string& name);
    static std::string typeKey2Label(const std::string& key);
    static std::string portName2Label(const std::string& name);
    static std::string modeLabel2DirName(const std::string& label, bool isResult);
    static std::string typeLabel2DirName(const std::string& label, bool isResult);
    // "10GE M2" gives "10gport" and "10GE M1" gives "10gport2". This exchange is intentional. The flag is not
    // used.
    static std::string portLabel2DirName(const std::string& label, bool isResult);
    static std::string modeLabel2ModeName(const std::string& label);
    static std::string typeLabel2Key(const std::string& label);

    // Returns the port of a directory name, or "Unknown" for "". If the name contains any of the letters p,
    // o, r or t, its last four characters are removed; the rest is looked up as a port key. The test for
    // single letters instead of the word is intentional.
    static std::string str2Port(const std::string& name);
    // The same, but always removes the last n characters.
    static std::string str2Port(const std::string& name, int n);
    // Returns the name without its last n characters, or "Unknown" for "". It is not looked up.
    static std::string str2Type(const std::string& name, int n);

    // --- records and lists (ConfLookups.cpp) ---

    // These find a record by its exact key. For an unknown key they write a line on standard error and throw
    // std::out_of_range.
    static const _ModeInfo& getModeInfo(const std::string& name);
    static const _TypeInfo& getTypeInfo(const std::string& key);
    static const _PortInfo& getPortInfo(const std::string& name);
    static const _ClassInfo& getClassInfo(const std::string& name);
    static const ModuleInfo& getModuleInfo(const std::string& name);
    // Whether getModuleInfo knows the name.
    static bool hasModule(const std::string& name);

    // The whole maps. They may change later; a caller that needs the present state copies them.
    static const std::map<std::string, _ModeInfo>& getModesInfo();
    static const std::map<std::string, _TypeInfo>& getTypesInfo();
    static const std::map<std::string, _PortInfo>& getPortsInfo();
    static const std::map<std::string, _ClassInfo>& getClassesInfo();
    static const std::map<std::string, ModuleInfo>& getModulesInfo();
    static const std::map<std::string, CommonOptInfo>& getCommonModuleInfo();
    static const std::list<ExtraDirInfo>& getExtraDirList();
    static void getExtraDirList(std::list<ExtraDirInfo>& out);
    // The extra directories of one mode of a module, in list order. Valid until the document is read again.
    static const std::vector<const ExtraDirInfo*>& getExtraDirs(const std::string& module,
                                                                const std::string& mode);

    // These append the names or keys of the configuration, except those that the list already has.
    static void getAllModeNames(std::list<std::string>& out);
    static void getAllTypeNames(std::list<std::string>& out);
    static void getAllTypeKeys(std::list<std::string>& out);
    static void getAllPortNames(std::list<std::string>& out);
    static void getAllModuleNames(std::list<std::string>& out);
    // The same for the keys of all types of one name.
    static void getTypeKeys(std::list<std::string>& out, const std::string& typeName);

    // Always returns "".
    static std::string getVerNum(const std::string& text);

    // --- what was found on disk (ConfFoundOnDisk.cpp) ---

    static void addCurrentMode(const std::string& name);
    // Also adds the type to the list of the mode that was added last.
    static void addCurrentType(const std::string& name);
    static void addCurrentPort(const std::string& name);
    static void addCurrentModule(const std::string& name);
    // These replace the caller's list.
    static void getCurrentMode(std::list<std::string>& out);
    static void getCurrentTypeNames(std::list<std::string>& out);
    static void getCurrentPort(std::list<std::string>& out);
    static void getCurrentModule(std::list<std::string>& out);
    static void getTypeByModeName(std::list<std::string>& out, const std::string& mode);
    // Appends the keys that the list does not have yet.
    static void getCurrentTypeKeys(std::list<std::string>& out);
    // Whether the mode was found on disk. When no mode was found, whether it is configured.
    static bool isCurrentMode(const std::string& name);
    // Adds the type to the list of the mode. Does nothing and returns false when the mode has no list yet or
    // its list already has the type.
    static bool addTypeToMode(const std::string& type, const std::string& mode);
    static void clearCurrentModes();
    static void clearCurrentTypes();
    static void clearCurrentPorts();
    static void clearCurrentModules();
    // Clears modes, types and ports, but not modules.
    static void clearCurrentAll();

    // Stores what the scan found for a module. The first record of a module stays. For "40GE" the type lists
    // of the stored record are merged into info, and only there.
    static void addScanModuleInfo(const std::string& module, ScanModuleToModeInfo& info);
    static const std::map<std::string, ScanModuleToModeInfo>& getScanModuleInfo();

    // Writes title and items to standard output. For debugging.
    static void dump(const std::string& title, const std::list<std::string>& items);

    // --- check marks of the primary filter (ConfChecked.cpp) ---

    static std::string checkState2Str(bool state);
    // Changes the mark in memory and in the document. The document is rewritten even when no entry has the
    // name. Returns false for an invalid type. Also returns false when the document cannot be parsed or
    // replaced; the mark in memory has changed then.
    static bool setFilterChecked(FilterType type, const std::string& name, bool state);
    // The same for every class, mode, type and port. Returns false when the document cannot be parsed or
    // replaced.
    static bool setAllFilterChecked(bool state);
    // These append.
    static void getCheckedClasses(std::list<std::string>& out);
    static void getCheckedModes(std::list<std::string>& out);
    static void getCheckedTypeNames(std::list<std::string>& out);
    static void getCheckedTypeKeys(std::list<std::string>& out);
    static void getCheckedPorts(std::list<std::string>& out);
    static void getCheckedModules(std::list<std::string>& out);
    static bool isTypeChecked(const std::string& typeName);
    // The slots of types and ports are exchanged. This is intentional; nothing sets them.
    static bool getAllChecked(FilterType type);

    // --- the filter of a request ---

    static void copyFilter(_ResultFilter& to, const _ResultFilter& from) { to = from; }

    // --- the information that files store (Companion.cpp) ---

    // Reads the advanced information that the file at path stores. Returns info with these fields, or info
    // unchanged when the file stores none.
    static _AdvanceInfo getAdvInfo(_AdvanceInfo info, const std::string& path);
    // The same for one of many files, which share the budget.
    static _AdvanceInfo getAdvInfo(_AdvanceInfo info, const std::string& path, CompanionBudget& budget);

    // --- which files match the advanced filter (AdvancedMatch.cpp) ---

    // Whether a file with this advanced information passes the filter.
    static bool advMatch(const _AdvanceInfo& filter, const _AdvanceInfo& file);

    // --- the advanced filter in the document (ConfAdvancedFilter.cpp) ---

    // Reads the stored state of the advanced filter, and the choices that the document offers.
    static void getAdvanceInfo(_AdvanceInfo& info);
    // Stores the state of the advanced filter. Returns 1, or 0 when the document could not be parsed or
    // replaced.
    static int saveAdvanceInfo(const _AdvanceInfo& info);
};
