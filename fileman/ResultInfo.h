#pragma once

#include <string>

// One listed file set. All fields start empty; the order is part of the interface.
struct _ResultInfo {
    std::string key;      // reserved, stays empty
    std::string id;       // see RecordId.h
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
