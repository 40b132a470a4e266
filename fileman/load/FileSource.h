#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// The file that stores the advanced information of a listed file D/base.ext. The difference is intentional:
// the instruments store it in different places.
enum class StoredInfo {
    Plain,     // D/base
    Companion, // D/base.xml
    Itself,    // D/base.ext
};

// Whether the instrument's own saved last configuration is listed.
enum class LastConfiguration { Keep, Drop };

// One directory whose files will be listed, and the common fields of their records.
struct FileSource {
    std::string dir;
    // Whether the listing of its parent shows it as a directory. Then no further test is needed.
    bool isListed = false;
    StoredInfo storedInfo = StoredInfo::Plain;
    LastConfiguration lastConfiguration = LastConfiguration::Drop;
    _ResultInfo record; // all fields except id, name, datetime and path
};
