#pragma once

#include <list>
#include <string>
#include <string_view>

// One listed file set. All fields start empty; the order is part of the interface.
struct _ResultInfo {
    std::string key;      // reserved, stays empty
    std::string id;       // set by CFileManager::addResultInfo
    std::string name;     // file name up to its first dot
    std::string module;   // module name; empty from the family loaders
    std::string mode;     // mode name; empty for Common results
    std::string test;     // type name, or the fixed word of a special source ("Screen")
    std::string port;     // port name; empty where the source has no ports
    std::string datetime; // status-change time, "YYYY-MM-DD hh:mm:ss" local time
    std::string rsltype;  // "Result" or "Profile"; "PCAP" and "sor" are recognised too
    std::string path;     // full path, extension included
    std::string type;     // type key
};

// A record in the parts that its row is made of, without the cost of making the record. What the files of one
// directory have in common is one object, the same one for all of them.
struct RecordParts {
    const _ResultInfo& common; // all fields but name and datetime; id and path only begin here
    std::string_view name;
    std::string_view idEnd;
    std::string_view pathEnd;
    std::string_view datetime;
};

inline RecordParts partsOf(const _ResultInfo& record) {
    return {record, record.name, {}, {}, record.datetime};
}

// The parameters of one load pass over one configured directory.
struct LoadInfo {
    std::string module;
    std::string mode;               // may be empty
    std::string dir;                // below the storage root; empty loads nothing
    int scanTree = 0;               // 1: port directories, then type directories, found on disk; else subDirs
    std::list<std::string> subDirs; // port directory names when scanTree is 1, else type directory names
    int isResult = 0;               // non-zero lists results, zero profiles
};

// Test families. The numbers are part of the interface; 0 and everything above 8 name no family.
enum TestMode : int {
    TM_ETHERNET = 1,
    TM_FIBER_CHANNEL = 2,
    TM_SDH = 3, // with SONET, PDH and OTN
    TM_ODU0 = 4,
    TM_OTUX = 5,
    TM_COMMON = 6,
    TM_CABLE = 7,
    TM_CPRI = 8,
};
