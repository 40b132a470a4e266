#include "fileman/RecordId.h"

std::string idPrefix(const _ResultInfo& record) {
    std::string prefix;
    for (const std::string* const field : {&record.mode, &record.port, &record.test, &record.rsltype})
        prefix.append(*field).append("_");
    return prefix;
}

// The string keeps its memory, because a list calls this for every row.
void putName(std::string& id, std::size_t prefixSize, std::string_view name) {
    id.resize(prefixSize);
    id.append(name);
    if (id.size() > kLongestId)
        id.resize(kLongestId);
}

std::string makeId(const _ResultInfo& record) {
    std::string id = idPrefix(record);
    putName(id, id.size(), record.name);
    return id;
}
