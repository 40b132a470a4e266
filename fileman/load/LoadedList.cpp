#include "fileman/load/LoadedList.h"

#include <memory>
#include <utility>

#include "common/CCommUtils.h"
#include "fileman/RecordId.h"
#include "fileman/names/ListedFiles.h"

ListedRow rowOf(const _ResultInfo& record) {
    return {record.id,   record.name,     record.module,  record.mode, record.test,
            record.port, record.datetime, record.rsltype, record.path, true};
}

// Makes the rows of one batch of files one after the other, always in the same memory.
class LoadedList::RowMaker {
public:
    explicit RowMaker(const Batch& batch)
        : m_common(batch.common), m_row(::rowOf(batch.common)), m_id(batch.common.id),
          m_path(batch.common.path) {}

    const std::string& idOf(const ListedFile& file) {
        putName(m_id, m_common.id.size(), listed::baseName(file.name));
        return m_id;
    }

    const std::string& pathOf(const ListedFile& file) {
        m_path.resize(m_common.path.size());
        return m_path.append(file.name);
    }

    const ListedRow& rowOf(const ListedFile& file) {
        m_row.id = idOf(file);
        m_row.name = listed::baseName(file.name);
        m_row.path = pathOf(file);
        m_row.datetime = dateText(file.changeTime == kDateNotRead ? changeTime(m_path) : file.changeTime);
        return m_row;
    }

    const ListedRow& nextRow(const ListedFile& file) {
        m_row.startsSource = m_isNew;
        m_isNew = false;
        return rowOf(file);
    }

    // The record lives until the process ends.
    _ResultInfo* newRecord(const ListedFile& file) {
        const ListedRow& row = rowOf(file);
        auto record = std::make_unique<_ResultInfo>(m_common);
        record->id = row.id;
        record->name = row.name;
        record->datetime = row.datetime;
        record->path = row.path;
        return record.release();
    }

private:
    // Files beside each other often have the same date.
    const std::string& dateText(std::time_t time) {
        if (m_date.empty() || m_time != time)
            m_date = formatDateTime(m_time = time);
        return m_date;
    }

    const _ResultInfo& m_common;
    ListedRow m_row; // the common fields are set at the start
    std::string m_id;
    std::string m_path;
    std::string m_date;
    std::time_t m_time = kUnknownTime;
    bool m_isNew = true;
};

void LoadedList::clear() {
    m_batches.clear();
    m_size = 0;
}

void LoadedList::add(_ResultInfo* record) {
    // A record after files begins a new batch, so that the order stays.
    if (m_batches.empty() || !m_batches.back().files.empty())
        m_batches.emplace_back();
    m_batches.back().records.push_back(record);
    ++m_size;
}

void LoadedList::addFiles(_ResultInfo common, const std::string& directory, std::vector<ListedFile> files) {
    common.id = idPrefix(common);
    common.path = directory + "/";
    m_size += files.size();
    m_batches.push_back({std::move(common), std::move(files), {}});
}

void LoadedList::visit(const RowVisitor& visitor) const {
    for (const Batch& batch : m_batches) {
        RowMaker rows(batch);
        for (const ListedFile& file : batch.files)
            visitor(rows.nextRow(file));
        for (const _ResultInfo* const record : batch.records)
            visitor(::rowOf(*record));
    }
}

void LoadedList::visitNewestPaths(const std::function<void(const std::string& path)>& visitor) const {
    RowMaker rows(m_batches.back());
    for (const ListedFile& file : m_batches.back().files)
        visitor(rows.pathOf(file));
}

void LoadedList::keepOnly(const std::function<bool(const std::string& id)>& isChosen) {
    std::list<_ResultInfo*> kept;
    for (const Batch& batch : m_batches) {
        RowMaker rows(batch);
        for (const ListedFile& file : batch.files) {
            // Only the identifier is made for each file, the record only for a chosen one.
            if (isChosen(rows.idOf(file)))
                kept.push_back(rows.newRecord(file));
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

// The new records replace the files in the list, so that the next call returns the same records.
void LoadedList::getRecords(std::list<_ResultInfo*>& out) {
    out.clear();
    for (const Batch& batch : m_batches) {
        RowMaker rows(batch);
        for (const ListedFile& file : batch.files)
            out.push_back(rows.newRecord(file));
        out.insert(out.end(), batch.records.begin(), batch.records.end());
    }
    replaceBy(out);
}

void LoadedList::replaceBy(const std::list<_ResultInfo*>& records) {
    clear();
    for (_ResultInfo* const record : records)
        add(record);
}
