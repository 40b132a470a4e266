#include "fileman/load/LoadedList.h"

#include <memory>
#include <utility>

#include "common/CCommUtils.h"
#include "fileman/RecordId.h"
#include "fileman/names/ListedFiles.h"

ListedRow rowOf(const _ResultInfo& record) {
    return {record.id,   record.name,     record.module,  record.mode, record.test,
            record.port, record.datetime, record.rsltype, record.path};
}

// Makes the rows of listed files, one after the other, in the same memory.
class LoadedList::RowMaker {
public:
    const std::string& idOf(const Batch& batch, const ListedFile& file) {
        makeId(m_id, batch.common.id, listed::baseName(file.name));
        return m_id;
    }

    const std::string& pathOf(const Batch& batch, const ListedFile& file) {
        m_path.assign(batch.common.path).append(file.name);
        return m_path;
    }

    ListedRow rowOf(const Batch& batch, const ListedFile& file) {
        ListedRow row = ::rowOf(batch.common);
        row.id = idOf(batch, file);
        row.name = listed::baseName(file.name);
        row.path = pathOf(batch, file);
        row.datetime = dateText(file.changeTime == kDateNotRead ? changeTime(m_path) : file.changeTime);
        return row;
    }

    // The record lives until the process ends.
    _ResultInfo* newRecord(const Batch& batch, const ListedFile& file) {
        const ListedRow row = rowOf(batch, file);
        auto record = std::make_unique<_ResultInfo>(batch.common);
        record->id = row.id;
        record->name = row.name;
        record->datetime = row.datetime;
        record->path = row.path;
        return record.release();
    }

private:
    // Neighbours often have the same date.
    const std::string& dateText(std::time_t time) {
        if (m_date.empty() || m_time != time)
            m_date = formatDateTime(m_time = time);
        return m_date;
    }

    std::string m_id;
    std::string m_path;
    std::string m_date;
    std::time_t m_time = kUnknownTime;
};

void LoadedList::clear() {
    m_batches.clear();
    m_size = 0;
}

void LoadedList::add(_ResultInfo* record) {
    if (m_batches.empty() || !m_batches.back().files.empty())
        m_batches.emplace_back();
    m_batches.back().records.push_back(record);
    ++m_size;
}

void LoadedList::startFiles(_ResultInfo common, const std::string& directory) {
    Batch& batch = m_batches.emplace_back();
    batch.common = std::move(common);
    batch.common.id = idPrefix(batch.common);
    batch.common.path = directory + "/";
}

void LoadedList::addFile(std::string_view fileName, std::time_t changeTime) {
    m_batches.back().files.push_back({fileName, changeTime});
    ++m_size;
}

void LoadedList::visit(const RowVisitor& visitor) const {
    RowMaker rows;
    for (const Batch& batch : m_batches) {
        for (const ListedFile& file : batch.files)
            visitor(rows.rowOf(batch, file));
        for (const _ResultInfo* const record : batch.records)
            visitor(::rowOf(*record));
    }
}

void LoadedList::visitNewestPaths(const std::function<void(const std::string& path)>& visitor) const {
    RowMaker rows;
    for (const ListedFile& file : m_batches.back().files)
        visitor(rows.pathOf(m_batches.back(), file));
}

void LoadedList::keepOnly(const std::function<bool(const std::string& id)>& isChosen) {
    RowMaker rows;
    std::list<_ResultInfo*> kept;
    for (const Batch& batch : m_batches) {
        for (const ListedFile& file : batch.files) {
            if (isChosen(rows.idOf(batch, file)))
                kept.push_back(rows.newRecord(batch, file));
        }
        for (_ResultInfo* const record : batch.records) {
            if (!isChosen(record->id))
                continue;
            if (record->datetime.empty())
                record->datetime = CCommUtils::createDateTime(record->path);
            kept.push_back(record);
        }
    }
    replaceBy(kept);
}

void LoadedList::getRecords(std::list<_ResultInfo*>& out) {
    RowMaker rows;
    out.clear();
    for (const Batch& batch : m_batches) {
        for (const ListedFile& file : batch.files)
            out.push_back(rows.newRecord(batch, file));
        out.insert(out.end(), batch.records.begin(), batch.records.end());
    }
    replaceBy(out);
}

void LoadedList::replaceBy(const std::list<_ResultInfo*>& records) {
    clear();
    for (_ResultInfo* const record : records)
        add(record);
}
