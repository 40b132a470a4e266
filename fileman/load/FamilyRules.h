#pragma once

#include <optional>
#include <string>

#include "fileman/ResultInfo.h"
#include "fileman/load/FileStep.h"
#include "fileman/load/LoadPass.h"

// What is opened below each root of a family.
enum class ModeDir {
    Append,   // root + "/" + the mode's directory name; an empty name lists nothing
    None,     // the root itself; the mode's names are not looked at
    Required, // the root itself, but an empty name lists nothing
};

// Where the port of a file comes from. Filters see a port directory's str2Port name, records its label.
enum class PortFrom {
    None,         // no port level, records without a port
    Dir,          // a port directory, by str2Port
    DirLabel,     // the same, but 10G names become their str2PortName label
    DirLabelOtux, // the same with str2PortNameOtux
    Root,         // the root is the port, by str2PortName
    RootOtux,     // the root is the port: "M1" below "/p1/", else "M2"
};

// Which types pass when the filter names none.
enum class Types { Any, Known };

// Type keys of a type directory: what the filter is asked and what the record gets.
struct TypeKeys {
    std::string filter;
    std::string record;
};

// One row a loader; two loaders with two kinds of directory are written out instead.
struct FamilyRule {
    TestMode family;
    Half half;
    ModeDir modeDir;
    PortFrom port;
    // The keys of a directory at the type level, nothing when it is not listed. Null: no such level, the
    // files lie above it and are of the type "bert".
    std::optional<TypeKeys> (*typeKeys)(const std::string& dirName);
    Types types;
    Scratch scratch;
};

// The family's rule; null for the loaders that have none.
const FamilyRule* findFamilyRule(TestMode family, Half half);
