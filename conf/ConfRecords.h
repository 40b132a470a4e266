#pragma once

#include <list>
#include <map>
#include <string>

// The entries of the configuration document. The order of the fields is part of the interface. It is not the
// order in the document, where the suffix pairs are the other way round.

struct _ClassInfo {
    std::string name;
    bool checked = false;
};

// The directories in which one test mode of one module stores its files. The profile half and the result half
// have the same fields.
struct ModeOptInfo {
    std::string mode_name;
    std::string prof_dir_name;        // below the storage root; empty when the mode has no profiles
    bool prof_under_port_dir = false; // true: it has port directories; false: type directories or files
    std::list<std::string> prof_list; // the directory names that the half accepts
    std::string rslt_dir_name;
    bool rslt_under_port_dir = false;
    std::list<std::string> rslt_list;
};

struct ModuleInfo {
    std::string name;
    bool checked = false;
    std::map<std::string, ModeOptInfo> modeOpts; // by mode name; empty for the module "Common"
};

// One storage entry of the module "Common".
struct CommonOptInfo {
    std::string test_name; // "Result", "Profile", or the test word of a flat listing such as "Screen"
    std::string key;       // type key
    std::string dir_name;  // below the storage root
    bool under_port_dir = false;
    std::list<std::string> list; // port directory names
};

struct _ModeInfo {
    std::string label;
    std::string name;
    std::string rslt_dir_name;
    std::string prof_dir_name;
    bool checked = false;
};

struct _TypeInfo {
    std::string label;
    std::string name;
    std::string key;
    std::string rslt_suffix;
    std::string prof_suffix;
    bool checked = false;
};

struct _PortInfo {
    std::string label;
    std::string name;
    std::string key;
    std::string dir;
    std::string rslt_suffix;
    std::string prof_suffix;
    bool checked = false;
};

// One additional directory of results or profiles outside the regular tree.
struct ExtraDirInfo {
    std::string module;
    std::string mode;
    std::string port; // empty: belongs to no port
    std::string key;  // type key
    bool isResult = false;
    std::string dir_name; // below the storage root
};
