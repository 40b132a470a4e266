#pragma once

#include <string>

// One record: a listed file with its companions. All fields start empty. Their order is part of the
// interface.
struct _ResultInfo {
    std::string key;      // reserved, stays empty
    std::string id;       // see RecordId.h
    std::string name;     // file name up to its first dot
    std::string module;   // module name; empty from the family loaders
    std::string mode;     // mode name; empty for Common results
    std::string test;     // type name, or the fixed word of a special source ("Screen")
    std::string port;     // port name; empty where the source has no ports
    std::string datetime; // status-change time, "YYYY-MM-DD hh:mm:ss" local time
    std::string rsltype;  // "Result", "Profile", "PCAP" (a capture) or "sor" (never set by the loaders)
    std::string path;     // full path, extension included
    std::string type;     // type key
};
