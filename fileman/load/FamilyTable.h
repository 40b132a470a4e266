#pragma once

#include <optional>
#include <string>

#include "fileman/LoadInfo.h"
#include "fileman/TestMode.h"
#include "fileman/load/FileSource.h"

// What is opened below each root of a family.
enum class ModeDir {
    Append,   // root + "/" + the mode's directory name; an empty name lists nothing
    None,     // the root itself; the mode's names are not looked at
    Required, // the root itself, but an empty name lists nothing
};

// Where the port of a file comes from. The filter is compared with a port directory's port name; the record
// may show its label instead.
enum class PortFrom {
    None,         // no port level, records without a port
    Dir,          // a port directory, by its port name
    DirLabel,     // the same, but the record of a 10G port shows its label
    DirLabelOtux, // the same with the labels of OTU-X
    Root,         // the root is the port, by its label
    RootOtux,     // the root is the port: "M1" below "/p1/", else "M2"
};

// Which types pass when the filter names none.
enum class Types { Any, Known };

// Type keys of a type directory: what the filter is asked and what the record gets.
struct TypeKeys {
    std::string filter;
    std::string record;
};

// One row for each loader. Two loaders with two kinds of directory have none; FamilyLoader spells them out.
struct FamilyRule {
    TestMode family;
    Half half;
    ModeDir modeDir;
    PortFrom port;
    // The keys of a directory at the type level, nothing when it is not listed. Null: no such level, the
    // files lie above it and are of the type "bert".
    std::optional<TypeKeys> (*typeKeys)(const std::string& dirName);
    Types types;
    LastConfiguration lastConfiguration;
};

// The family's rule; null for the loaders that have none.
const FamilyRule* findFamilyRule(TestMode family, Half half);
