#pragma once

#include <cstddef>
#include <ctime>
#include <deque>
#include <functional>
#include <list>

#include "fileman/FileStep.h"
#include "fileman/ResultInfo.h"

// The records of the last load, in the order found.
//
// Of a listed file only its place and its date are kept, a twentieth of a record: the list page looks at each
// record once, and a list of 100,000 would otherwise spend more on memory than on the disk. Records that
// somebody wants to hold are made when he asks, and stay.
class LoadedList {
public:
    using Visitor = std::function<void(const _ResultInfo&)>;

    void clear();
    std::size_t size() const { return m_items.size(); }

    void add(_ResultInfo* record);
    // Keeps what the records of one directory share, for the following.
    const FileSource& keep(const FileSource& source);
    // source comes from keep; fileName lives as long as the list.
    void add(const FileSource& source, const char* fileName, std::time_t changeTime);

    // Shows the records from the position first on; each is valid during its call only.
    void visit(std::size_t first, const Visitor& visitor) const;

    // Replaces out by all records; the same ones whenever it is asked.
    void getRecords(std::list<_ResultInfo*>& out) const;

private:
    // A listed file, or a record when there is no source.
    struct Item {
        const FileSource* source;
        union {
            const char* fileName;
            _ResultInfo* record;
        };
        std::time_t changeTime; // of the file
    };

    std::deque<FileSource> m_sources;
    mutable std::deque<Item> m_items;
};
