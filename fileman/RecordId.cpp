#include "fileman/RecordId.h"

std::string idPrefix(const _ResultInfo& record) {
    std::string prefix;
    for (const std::string* const field : {&record.mode, &record.port, &record.test, &record.rsltype})
        prefix.append(*field).append("_");
    return prefix;
}

void makeId(std::string& id, std::string_view prefix, std::string_view name) {
    id.assign(prefix).append(name);
    if (id.size() > kLongestId)
        id.resize(kLongestId);
}
