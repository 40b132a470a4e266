#pragma once

#include <functional>
#include <list>
#include <map>
#include <string>

#include "conf/ResultFilter.h"
#include "fileman/ResultInfo.h"

class CFileManager;

// One request and the pages and files that answer it. Everything is written to standard output; nothing
// reports a failure, because every request has some valid answer. Values go into the pages as they are.
class CFileManCGI {
public:
    // What a request asks for. The numbers are part of the interface; 10 is never used.
    enum ActionType : unsigned {
        ACTION_LIST_ALL = 1,
        ACTION_LIST_RESULTS = 2,
        ACTION_LIST_PROFILES = 3,
        ACTION_LIST_SCREENSHOTS = 4,
        ACTION_PRIMARY_FILTER = 5,
        ACTION_ADVANCED_FILTER = 6,
        ACTION_VIEW = 7,
        ACTION_PDF = 8,
        ACTION_DOWNLOAD = 9,
        ACTION_REQUEST_INFO = 11,
    };

    // Fields of the primary filter page. Every other number is no field.
    enum FilterType : int {
        FIELD_MODULE = 1,
        FIELD_MODE = 2,
        FIELD_TEST = 3,
        FIELD_PORT = 4,
        FIELD_RESULT_TYPE = 5,
    };

    // --- the request (Request.cpp) ---

    // Cuts the decoded query into m_queryInfo; the first value of a key stays. Always 1.
    int parseQueryInfo(const char* query);
    // One "key=value" piece; false when it is empty or has no '='.
    bool parseKeyValue(const std::string& pair);
    // An ActionType: "filter" before "fmtype" before "opertype", unknown values fall through.
    unsigned getFileManType() const;
    // The value of "fmtype" as given; "" without one.
    std::string getFileManTypeString() const;
    // Tells whether the key "rsltid" names a record's identifier.
    std::function<bool(const std::string& id)> getChooser() const;
    // Fills what the query names, leaves the rest of filter alone, and keeps a copy of it in m_filter.
    void getFilterFromRequest(_ResultFilter& filter);

    // --- element ids that the pages and their scripts share (OptionIds.cpp) ---

    static std::string getRowCheckId(const std::string& name);
    static std::string getModeOptionId(const std::string& name);
    static std::string getTestOptionId(const std::string& name);
    static std::string getPortOptionId(const std::string& name);
    static std::string getRsltTypeOptionId(const std::string& name);
    // "" for a type that is no field.
    static std::string getOptionId(FilterType type, const std::string& name);

    // --- the list page (ListPage.cpp) ---

    // The whole response. Always 1.
    int writeFileManPage(std::list<_ResultInfo*> results);
    // The same of what the store has loaded, without a list of all records.
    int writeFileManPage(const CFileManager& store);
    // The form that carries the filter of this list into the next request.
    void writeSubmitForm();
    // The empty form into which the scripts put a command and the chosen ids.
    void writeCommandForm();

    // --- the filter pages (FilterPages.cpp) ---

    void writePriFilterPage();
    void writeAdvFilterPage();
    // One group of check boxes; nothing for a type that is no field.
    void writeOptionField(FilterType type);
    // "checked" or "".
    static std::string checkStat2String(bool checked);
    // No page uses these two.
    static void startOptionColumn(int width, int height);
    static void endOptionColumn();

    // --- delivery (View.cpp, Download.cpp, PdfExport.cpp, Attachment.cpp) ---
    // The query key "rsltid" names the records.

    // Sends the first chosen record's file, one file whatever the number of ids.
    void viewResults(std::list<_ResultInfo*> results);
    // Sends each file inline; a file that cannot be opened has a header and no body.
    void viewFiles(std::list<std::string> paths);
    // Sends the chosen records with their companions as one archive.
    void downloadResults(std::list<_ResultInfo*> results);
    // Sends one file as an attachment; a file that cannot be opened has a header and no body. Below /tmp only
    // a regular file of this user or root with one name is sent. Always 1.
    int downloadFile(const std::string& path);
    // Sends the chosen records as the converter's PDFs: one as it is, none or several as an archive.
    void convert2PDF(std::list<_ResultInfo*> results);

    // --- data ---

    std::map<std::string, std::string> m_queryInfo; // the decoded query, by key
    _ResultFilter m_filter;                         // what getFilterFromRequest found, for the pages

private:
    int writeForms();
};
