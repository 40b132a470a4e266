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

// The document that CFileManConf::loadConf keeps open; null when there is none.
extern TiXmlDocument* g_pXmlDoc;

// The instrument's result configuration: the document's vocabulary, what of it was found on disk, and the
// document's stored filter state. Class-level operations only; the state is process-wide and not locked.
//
// "Lookups" compare without regard to letter case, walk in key order, and return "" when nothing matches.
class CFileManConf {
public:
    // Sections of the primary filter. The numbers are part of the interface.
    enum FilterType : int { FT_CLASS = 0, FT_MODULE = 1, FT_MODE = 2, FT_TYPE = 3, FT_PORT = 4 };

    // --- the document (ConfDocument.cpp) ---

    static std::string getConfPath();
    static std::string getConfFileName();
    // Adds the document's entries to the vocabulary; the first entry of a key stays. False when there is no
    // such document, it does not parse or has no filter element; what was read before stays.
    static bool readConf(const std::string& path);
    // Keeps the parsed document in g_pXmlDoc. True at once when one is kept already, else whether it parsed
    // (it is kept even when it did not).
    static bool loadConf(const std::string& path);
    static void releaseConf();
    // Whether value is exactly "true".
    static bool isChecked(const std::string& value);

    // --- lookups (ConfLookups.cpp) ---

    // Mode whose result or profile directory this is. The exact word "ktr" gives the first mode.
    // This is intentional.
    static std::string getModeName(const std::string& dirName);
    static std::string getTypeName(const std::string& typeKey);
    static std::string getPortName(const std::string& portKey);
    static std::string modeName2Label(const std::string& name);
    static std::string typeKey2Label(const std::string& key);
    static std::string portName2Label(const std::string& name);
    static std::string modeLabel2DirName(const std::string& label, bool isResult);
    static std::string typeLabel2DirName(const std::string& label, bool isResult);
    // "10GE M2" gives "10gport" and "10GE M1" gives "10gport2": crossed on purpose. The flag is not used.
    static std::string portLabel2DirName(const std::string& label, bool isResult);
    static std::string modeLabel2ModeName(const std::string& label);
    static std::string typeLabel2Key(const std::string& label);

    // Records by exact key. An unknown key throws std::out_of_range after a line on standard error.
    static const _ModeInfo& getModeInfo(const std::string& name);
    static const _TypeInfo& getTypeInfo(const std::string& key);
    static const _PortInfo& getPortInfo(const std::string& name);
    static const _ClassInfo& getClassInfo(const std::string& name);
    static const ModuleInfo& getModuleInfo(const std::string& name);

    // The whole maps; a caller that needs them to stay as they are copies them.
    static const std::map<std::string, _ModeInfo>& getModesInfo();
    static const std::map<std::string, _TypeInfo>& getTypesInfo();
    static const std::map<std::string, _PortInfo>& getPortsInfo();
    static const std::map<std::string, _ClassInfo>& getClassesInfo();
    static const std::map<std::string, ModuleInfo>& getModulesInfo();
    static const std::map<std::string, CommonOptInfo>& getCommonModuleInfo();
    static const std::list<ExtraDirInfo>& getExtraDirList();
    static void getExtraDirList(std::list<ExtraDirInfo>& out);
    // Those of one mode of a module, in list order; valid until the document is read again.
    static const std::vector<const ExtraDirInfo*>& getExtraDirs(const std::string& module,
                                                                const std::string& mode);

    // These append the names or keys of the configuration, without those that the list holds already.
    static void getAllModeNames(std::list<std::string>& out);
    static void getAllTypeNames(std::list<std::string>& out);
    static void getAllTypeKeys(std::list<std::string>& out);
    static void getAllPortNames(std::list<std::string>& out);
    static void getAllModuleNames(std::list<std::string>& out);
    // The same for the keys of all types of one name.
    static void getTypeKeys(std::list<std::string>& out, const std::string& typeName);

    // Always "".
    static std::string getVerNum(const std::string& text);

    // Port of a directory name: less its last four characters when it holds any of the letters p, o, r, t
    // (not the word, which is intentional), looked up as a port key. "Unknown" for "".
    static std::string str2Port(const std::string& name);
    // The same less the last n characters.
    static std::string str2Port(const std::string& name, int n);
    // Less the last n characters, no lookup. "Unknown" for "".
    static std::string str2Type(const std::string& name, int n);

    // --- what was found on disk (ConfCurrent.cpp) ---

    static void addCurrentMode(const std::string& name);
    // Also files the type under the mode added last.
    static void addCurrentType(const std::string& name);
    static void addCurrentPort(const std::string& name);
    static void addCurrentModule(const std::string& name);
    // These replace the caller's list.
    static void getCurrentMode(std::list<std::string>& out);
    static void getCurrentTypeNames(std::list<std::string>& out);
    static void getCurrentPort(std::list<std::string>& out);
    static void getCurrentModule(std::list<std::string>& out);
    static void getTypeByModeName(std::list<std::string>& out, const std::string& mode);
    // Appends what the list does not hold yet.
    static void getCurrentTypeKeys(std::list<std::string>& out);
    // Whether the mode was found on disk; when none was, whether it is configured.
    static bool isCurrentMode(const std::string& name);
    // True when types were added under the mode before and this one was not among them.
    static bool addTypeToMode(const std::string& type, const std::string& mode);
    static void clearCurrentModes();
    static void clearCurrentTypes();
    static void clearCurrentPorts();
    static void clearCurrentModules();
    // Modes, types and ports; modules stay.
    static void clearCurrentAll();

    // Keeps the scan's record of a module; the first record of a module stays. For "40GE" the type lists
    // stored before are merged into info, and only there.
    static void addScanModuleInfo(const std::string& module, ScanModuleToModeInfo& info);
    static const std::map<std::string, ScanModuleToModeInfo>& getScanModuleInfo();

    // Writes title and items to standard output, for debugging.
    static void dump(const std::string& title, const std::list<std::string>& items);

    // --- check marks of the primary filter (ConfCheckState.cpp) ---

    static std::string checkState2Str(bool state);
    // Changes the mark in memory and in the document, which is rewritten even when no entry has the name.
    // False for an invalid type, and when the document cannot be parsed or replaced (memory has changed
    // then).
    static bool setFilterChecked(FilterType type, const std::string& name, bool state);
    // Every class, mode, type and port. False when the document cannot be parsed or replaced.
    static bool setAllFilterChecked(bool state);
    // These append.
    static void getCheckedClasses(std::list<std::string>& out);
    static void getCheckedModes(std::list<std::string>& out);
    static void getCheckedTypeNames(std::list<std::string>& out);
    static void getCheckedTypeKeys(std::list<std::string>& out);
    static void getCheckedPorts(std::list<std::string>& out);
    static void getCheckedModules(std::list<std::string>& out);
    static bool isTypeChecked(const std::string& typeName);
    // The slots of types and ports are crossed on purpose; nothing sets them.
    static bool getAllChecked(FilterType type);

    // --- the filter of a request ---

    static void copyFilter(_ResultFilter& to, const _ResultFilter& from) { to = from; }

    // --- advanced information (ConfAdvance.cpp) ---

    // What the file at path says about itself; info as it is when there is nothing to read.
    static _AdvanceInfo getAdvInfo(_AdvanceInfo info, const std::string& path);
    // The same for one of many files, within the budget that they share.
    static _AdvanceInfo getAdvInfo(_AdvanceInfo info, const std::string& path, CompanionBudget& budget);
    static bool advMatch(const _AdvanceInfo& filter, const _AdvanceInfo& file);
    // The stored state of the advanced filter and the choices on offer.
    static void getAdvanceInfo(_AdvanceInfo& info);
    // 1 after the document was replaced, 0 when it could not be parsed or replaced.
    static int saveAdvanceInfo(const _AdvanceInfo& info);
};
