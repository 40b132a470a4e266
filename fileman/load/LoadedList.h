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

// The fields of a record that a page shows. The texts are valid only during the call of the visitor.
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
    // False when this row comes from the directory of the row before: then the two differ in name, date and
    // what is made of the name only.
    bool startsSource = true;
};

using RowVisitor = std::function<void(const ListedRow&)>;

ListedRow rowOf(const _ResultInfo& record);

// The value for a date that has not been read yet.
inline constexpr std::time_t kDateNotRead = kUnknownTime + 1;

struct ListedFile {
    std::string_view name; // points into the listing
    std::time_t changeTime;
};

// The records of the last load, in the order in which they were found.
//
// A listed file is kept as a pointer into the listing of its directory and a date, not as a record: a page
// shows each row once, and 100,000 records of eleven strings cost more than reading the disk. A record is
// made only when a caller needs to keep it, and then stays.
class LoadedList {
public:
    void clear();
    std::size_t size() const { return m_size; }

    void add(_ResultInfo* record);
    // Adds the files of one directory. common contains their common fields. Their names point into the
    // listing of the directory, which must live as long as this list.
    void addFiles(_ResultInfo common, const std::string& directory, std::vector<ListedFile> files);

    // Calls visitor with each row, in order.
    void visit(const RowVisitor& visitor) const;
    // Calls visitor with the paths of the files that the last addFiles added.
    void visitNewestPaths(const std::function<void(const std::string& path)>& visitor) const;

    // Removes the records whose identifier is not chosen. Reads the missing dates of the others.
    void keepOnly(const std::function<bool(const std::string& id)>& isChosen);

    // Replaces out by all records. Every call returns the same records.
    void getRecords(std::list<_ResultInfo*>& out);

private:
    // Consecutive entries of one kind: the files of one directory, or records.
    struct Batch {
        _ResultInfo common; // of the files; id is the prefix of their ids, path their directory and '/'
        std::vector<ListedFile> files;
        std::vector<_ResultInfo*> records;
    };
    class RowMaker;

    void replaceBy(const std::list<_ResultInfo*>& records);

    std::deque<Batch> m_batches;
    std::size_t m_size = 0;
};
