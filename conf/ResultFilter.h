#pragma once

#include <list>
#include <string>

// The advanced criteria of a request, and equally what one result file says about itself.
struct _AdvanceInfo {
    std::string jobId;
    std::string account;
    std::string locator;                // the chosen locator; "None" in any letter case means no choice
    std::list<std::string> locatorList; // the locators on offer, from the configuration document
    std::string type;                   // the chosen type; "None" as for locator
    std::list<std::string> typeList;    // the types on offer, from the configuration document
    std::string prefix;                 // required start of the base file name
    std::string fileName;               // text the base file name contains; of a file: its base name
    std::string suffix;                 // required end of the base file name
    bool hasAdvance = false; // whether any field restricts; set by the readers of stored information only
};

// What a request selects. An empty list restricts nothing.
struct _ResultFilter {
    std::list<std::string> modules;
    std::list<std::string> modes;
    std::list<std::string> tests; // type keys
    std::list<std::string> ports;
    bool includeResults = false;
    bool includeProfiles = false;
    _AdvanceInfo advanceInfo;
};
