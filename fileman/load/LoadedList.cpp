#include "fileman/load/LoadedList.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "common/CCommUtils.h"
#include "common/FileDate.h"
#include "fileman/CFileManager.h"
#include "fileman/disk/StorageTree.h"

namespace {

// Text of one date after the other; neighbours often have the same one.
class DateText {
public:
    std::string_view of(std::time_t time) {
        if (m_text.empty() || m_time != time)
            m_text = formatDateTime(m_time = time);
        return m_text;
    }

private:
    std::time_t m_time = kUnknownTime;
    std::string m_text;
};

std::string_view nameOf(std::string_view fileName) {
    return fileName.substr(0, fileName.find('.'));
}

std::string_view idEndOf(const _ResultInfo& common, std::string_view name) {
    return name.substr(0, CFileManager::kLongestId - common.id.size());
}

std::time_t timeOf(const _ResultInfo& common, const char* listedName) {
    const std::time_t time = Directory::changeTime(listedName);
    return time == kTimeNotAsked ? changeTime(common.path + listedName) : time;
}

RecordParts partsOf(const _ResultInfo& common, const char* listedName, DateText& dates) {
    const std::string_view fileName = listedName;
    const std::string_view name = nameOf(fileName);
    return {common, name, idEndOf(common, name), fileName, dates.of(timeOf(common, listedName))};
}

std::unique_ptr<_ResultInfo> makeRecord(const RecordParts& parts) {
    auto record = std::make_unique<_ResultInfo>(parts.common);
    record->name = parts.name;
    record->id += parts.idEnd;
    record->path += parts.pathEnd;
    record->datetime = parts.datetime;
    return record;
}

} // namespace

void LoadedList::clear() {
    m_items.clear();
    m_runs.clear();
}

void LoadedList::add(_ResultInfo* record) {
    append(record);
}

void LoadedList::append(_ResultInfo* record) const {
    if (m_runs.empty() || m_runs.back().areFiles)
        m_runs.push_back({false, {}, m_items.size()});
    Item item;
    item.record = record;
    m_items.push_back(item);
    ++m_runs.back().end;
}

void LoadedList::startFiles(_ResultInfo common, const std::string& directory) {
    common.id = CFileManager::makeUniqueId(&common);
    common.path.assign(directory).append("/");
    m_runs.push_back({true, std::move(common), m_items.size()});
}

void LoadedList::addFile(const char* fileName) {
    m_items.push_back({fileName});
    ++m_runs.back().end;
}

template<typename Step>
void LoadedList::forEachItem(std::size_t first, Step&& step) const {
    auto item = m_items.begin() + static_cast<std::ptrdiff_t>(first);
    std::size_t position = first;
    for (const Run& run : m_runs) {
        for (; position < run.end; ++position, ++item)
            step(run, *item);
    }
}

void LoadedList::visit(const Visitor& visitor) const {
    DateText dates;
    forEachItem(0, [&](const Run& run, const Item& item) {
        visitor(run.areFiles ? partsOf(run.common, item.fileName, dates) : ::partsOf(*item.record));
    });
}

void LoadedList::visitPaths(std::size_t first,
                            const std::function<void(const std::string& path)>& visitor) const {
    forEachItem(first, [&](const Run& run, const Item& item) {
        visitor(run.areFiles ? run.common.path + item.fileName : item.record->path);
    });
}

void LoadedList::replaceBy(const std::list<_ResultInfo*>& records) const {
    m_items.clear();
    m_runs.clear();
    for (_ResultInfo* const record : records)
        append(record);
}

void LoadedList::keepOnly(const std::function<bool(const std::string& id)>& isChosen) {
    DateText dates;
    std::list<_ResultInfo*> kept;
    std::string id;
    forEachItem(0, [&](const Run& run, const Item& item) {
        if (run.areFiles) {
            id.assign(run.common.id).append(idEndOf(run.common, nameOf(item.fileName)));
            if (isChosen(id))
                kept.push_back(makeRecord(partsOf(run.common, item.fileName, dates)).release());
        } else if (isChosen(item.record->id)) {
            if (item.record->datetime.empty())
                item.record->datetime = CCommUtils::createDateTime(item.record->path);
            kept.push_back(item.record);
        }
    });
    replaceBy(kept);
}

void LoadedList::getRecords(std::list<_ResultInfo*>& out) const {
    DateText dates;
    out.clear();
    forEachItem(0, [&](const Run& run, const Item& item) {
        out.push_back(run.areFiles ? makeRecord(partsOf(run.common, item.fileName, dates)).release()
                                   : item.record);
    });
    replaceBy(out);
}
