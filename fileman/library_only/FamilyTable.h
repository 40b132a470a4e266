#pragma once

#include <optional>
#include <string>

#include "fileman/LoadInfo.h"
#include "fileman/TestMode.h"
#include "fileman/load/FileSource.h"

// The directory that is opened for each root of a family.
enum class ModeDir {
    Append,   // root + "/" + the mode's directory name; an empty name lists nothing
    None,     // the root itself; the mode's directory names are not used
    Required, // the root itself, but an empty name lists nothing
};

// The origin of the port. The filter tests the port name of a port directory; the record may show its label
// instead.
enum class PortFrom {
    None,         // no port level; the records have no port
    Dir,          // the port name of a port directory
    DirLabel,     // the same, but the record of a 10G port shows its label
    DirLabelOtux, // the same with the labels of OTU-X
    Root,         // the label of the root
    RootOtux,     // "M1" for a root below "/p1/", else "M2"
};

// Which types pass when the filter names no type: all, or only those that were found on disk.
enum class Types { Any, Known };

// The type keys of a type directory: one for the filter, one for the record.
struct TypeKeys {
    std::string filter;
    std::string record;
};

// One row for each loader. Two loaders have no row, because they load two kinds of directories; FamilyLoader
// has a function for each.
struct FamilyRule {
    TestMode family;
    Half half;
    ModeDir modeDir;
    PortFrom port;
    // Returns the keys of a type directory, or nullopt when it is not listed. A null pointer means that there
    // is no type level: the files are in the directory above and have the type "bert".
    std::optional<TypeKeys> (*typeKeys)(const std::string& dirName);
    Types types;
    LastConfiguration lastConfiguration;
};

// Returns the rule for a family and half, or null for a loader without a row.
const FamilyRule* findFamilyRule(TestMode family, Half half);

// Captures among the Ethernet results are the only records with a rsltype of their own.
bool isCapture(const FamilyRule& rule, const std::string& type);

// Whether a type directory of the Common results has no port level: it is beside the port directories.
bool isBesidePorts(const std::string& dirName);
