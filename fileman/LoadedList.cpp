#include "fileman/LoadedList.h"

#include <memory>
#include <string>
#include <string_view>

#include "common/FileDate.h"
#include "fileman/CFileManager.h"

namespace {

// Makes the record of one file after the other; what neighbours share is written once.
class RecordMaker {
public:
    const _ResultInfo& make(const FileSource& source, std::string_view fileName, std::time_t changeTime) {
        if (m_source != &source)
            start(source);
        m_record.name = fileName.substr(0, fileName.find('.'));
        m_record.id.replace(m_idStart, std::string::npos, m_record.name);
        if (m_record.id.size() > CFileManager::kLongestId)
            m_record.id.resize(CFileManager::kLongestId);
        m_record.path.replace(m_pathStart, std::string::npos, fileName);
        if (m_changeTime != changeTime)
            m_record.datetime = formatDateTime(m_changeTime = changeTime);
        return m_record;
    }

private:
    void start(const FileSource& source) {
        m_source = &source;
        m_record = source.record;
        m_record.id = CFileManager::makeUniqueId(&m_record);
        m_record.path = source.dir + "/";
        m_record.datetime = formatDateTime(m_changeTime);
        m_idStart = m_record.id.size();
        m_pathStart = m_record.path.size();
    }

    const FileSource* m_source = nullptr;
    _ResultInfo m_record;
    std::size_t m_idStart = 0;
    std::size_t m_pathStart = 0;
    std::time_t m_changeTime = kUnknownTime;
};

} // namespace

void LoadedList::clear() {
    m_items.clear();
    m_sources.clear();
}

void LoadedList::add(_ResultInfo* record) {
    Item item{nullptr, {}, kUnknownTime};
    item.record = record;
    m_items.push_back(item);
}

const FileSource& LoadedList::keep(const FileSource& source) {
    return m_sources.emplace_back(source);
}

void LoadedList::add(const FileSource& source, const char* fileName, std::time_t changeTime) {
    m_items.push_back({&source, {fileName}, changeTime});
}

void LoadedList::visit(std::size_t first, const Visitor& visitor) const {
    RecordMaker maker;
    for (auto item = m_items.begin() + static_cast<std::ptrdiff_t>(first); item != m_items.end(); ++item)
        visitor(item->source == nullptr ? *item->record
                                        : maker.make(*item->source, item->fileName, item->changeTime));
}

void LoadedList::getRecords(std::list<_ResultInfo*>& out) const {
    RecordMaker maker;
    out.clear();
    for (Item& item : m_items) {
        if (item.source != nullptr) {
            const _ResultInfo& made = maker.make(*item.source, item.fileName, item.changeTime);
            item.record = std::make_unique<_ResultInfo>(made).release();
            item.source = nullptr;
        }
        out.push_back(item.record);
    }
}
