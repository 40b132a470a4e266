#pragma once

#include <list>
#include <string>

// The advanced criteria of a request. The same fields also hold the information that one result file stores.
struct _AdvanceInfo {
    std::string jobId;
    std::string account;
    std::string locator;                // the chosen locator; "None" in any letter case means no choice
    std::list<std::string> locatorList; // the locators that the configuration document offers
    std::string type;                   // the chosen type; "None" as for locator
    std::list<std::string> typeList;    // the types that the configuration document offers
    std::string prefix;                 // required start of the base file name
    std::string fileName;               // required part of the base file name; for a file: its base name
    std::string suffix;                 // required end of the base file name
    bool hasAdvance = false; // whether any field restricts; only readers of stored information set it
};

// Whether the choice of a locator or type is "None", in any letter case: no choice.
bool isNone(const std::string& choice);

// The filter of a request. An empty list restricts nothing.
struct _ResultFilter {
    std::list<std::string> modules;
    std::list<std::string> modes;
    std::list<std::string> tests; // type keys
    std::list<std::string> ports;
    bool includeResults = false;
    bool includeProfiles = false;
    _AdvanceInfo advanceInfo;
};
