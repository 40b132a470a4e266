#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <list>
#include <string>

#include "fileman/ResultInfo.h"

// The records of the last load, in the order found.
//
// Of a listed file only its place in the directory's listing is kept, where its date is, too: the list page
// looks at each record once, and a list of 100,000 would otherwise spend more on memory than on the disk.
// Records that somebody wants to hold are made when he asks, and stay.
class LoadedList {
public:
    using Visitor = std::function<void(const RecordParts&)>;

    void clear();
    std::size_t size() const { return m_items.size(); }

    void add(_ResultInfo* record);
    // The files added from now on come from that directory and have those fields in common.
    void startFiles(_ResultInfo common, const std::string& directory);
    // fileName: of an entry of the directory, in its listing, which lives as long as the list.
    void addFile(const char* fileName);

    // Shows the paths of the records from the position first on.
    void visitPaths(std::size_t first, const std::function<void(const std::string& path)>& visitor) const;

    // Drops the records whose identifier is not chosen, and reads the dates of the others where they are
    // missing.
    void keepOnly(const std::function<bool(const std::string& id)>& isChosen);

    // Shows the records in order; name and datetime are valid during the call only.
    void visit(const Visitor& visitor) const;

    // Replaces out by all records; the same ones whenever it is asked.
    void getRecords(std::list<_ResultInfo*>& out) const;

private:
    union Item {
        const char* fileName;
        _ResultInfo* record;
    };
    // Neighbours of one kind: files of one directory, or records.
    struct Run {
        bool areFiles;
        _ResultInfo common; // of files; id and path only begin here
        std::size_t end;    // the position behind the last of them
    };

    void append(_ResultInfo* record) const;
    void replaceBy(const std::list<_ResultInfo*>& records) const;
    // Calls step(run, item) for each item from the position first on.
    template<typename Step>
    void forEachItem(std::size_t first, Step&& step) const;

    // Files become records when somebody asks for these; what is in the list stays the same.
    mutable std::deque<Run> m_runs;
    mutable std::deque<Item> m_items;
};
