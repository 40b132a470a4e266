#pragma once

#include <cstddef>
#include <ctime>
#include <deque>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "common/FileDate.h"
#include "fileman/ResultInfo.h"

// What a page shows of one record. The texts are valid while the row is shown.
struct ListedRow {
    std::string_view id;
    std::string_view name;
    std::string_view module;
    std::string_view mode;
    std::string_view test;
    std::string_view port;
    std::string_view datetime;
    std::string_view rsltype;
    std::string_view path;
};

using RowVisitor = std::function<void(const ListedRow&)>;

ListedRow rowOf(const _ResultInfo& record);

// Stands for the date of a listed file that nobody has read yet.
inline constexpr std::time_t kDateNotRead = kUnknownTime + 1;

struct ListedFile {
    std::string_view name; // in the listing
    std::time_t changeTime;
};

// The records of the last load, in the order found.
//
// A listed file is kept as a pointer into its directory's listing and a date, not as a record: a page shows
// each row once, and 100,000 records of eleven strings cost more than reading the disk. A record is made when
// somebody wants to hold it, and stays.
class LoadedList {
public:
    void clear();
    std::size_t size() const { return m_size; }

    void add(_ResultInfo* record);
    // Adds the files of one directory, which have the fields of common in common. Their names stand in the
    // directory's listing, which lives as long as the list.
    void addFiles(_ResultInfo common, const std::string& directory, std::vector<ListedFile> files);

    // Shows the rows in order.
    void visit(const RowVisitor& visitor) const;
    // Shows the paths of the files that the last addFiles added.
    void visitNewestPaths(const std::function<void(const std::string& path)>& visitor) const;

    // Drops the records whose identifier is not chosen; reads the dates of the others where they are missing.
    void keepOnly(const std::function<bool(const std::string& id)>& isChosen);

    // Replaces out by all records; the same ones at each call.
    void getRecords(std::list<_ResultInfo*>& out);

private:
    // Neighbours of one kind: files of one directory, or records.
    struct Batch {
        _ResultInfo common; // of the files; id is the prefix of theirs, path their directory with its '/'
        std::vector<ListedFile> files;
        std::vector<_ResultInfo*> records;
    };
    class RowMaker;

    void replaceBy(const std::list<_ResultInfo*>& records);

    std::deque<Batch> m_batches;
    std::size_t m_size = 0;
};
