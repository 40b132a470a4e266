#pragma once

#include <string>

#include "fileman/ResultInfo.h"

// Which file holds the advanced information of a listed file D/base.ext. The difference is intentional: the
// sources were written for instruments that store it in different places.
enum class StoredInfo {
    Plain,     // D/base
    Companion, // D/base.xml
    Itself,    // D/base.ext
};

// Whether the instrument's own saved last configuration is listed.
enum class LastConfiguration { Keep, Drop };

// One directory whose files are to be listed, and what all of their records have in common.
struct FileSource {
    std::string dir;
    // Whether the listing of its parent shows it as a directory, so that nobody has to look for it again.
    bool isListed = false;
    StoredInfo storedInfo = StoredInfo::Plain;
    LastConfiguration lastConfiguration = LastConfiguration::Drop;
    _ResultInfo record; // every field but id, name, datetime and path
};
