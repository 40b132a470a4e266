#pragma once

#include <string>
#include <string_view>

#include "cgi/answer/Header.h"

// What strict answers refuse, and in which words. "{}" stands for a text from the request or the storage.
struct Refusal {
    Status status;
    std::string_view sentence;
};

namespace refusal {

constexpr Refusal kMethod{Status::MethodNotAllowed, "Only GET and HEAD are answered."};
constexpr Refusal kEscape{Status::BadRequest, "The query holds a malformed escape."};
constexpr Refusal kNoId{Status::BadRequest, "The request names no result: rsltid is missing or empty."};
constexpr Refusal kFormat{Status::BadRequest, "A list has no such format; it can be jsonl or csv."};
constexpr Refusal kModule{Status::BadRequest, "The configuration knows no module \"{}\"."};

constexpr Refusal kUnknownIds{Status::NotFound, "No stored result has such an identifier."};
constexpr Refusal kUnknownId{Status::NotFound, "No stored result has the identifier \"{}\"."};
constexpr Refusal kFileGone{Status::NotFound, "The file of this result does not exist any more."};
constexpr Refusal kFileUnreadable{Status::Failed, "The file of this result cannot be read."};
constexpr Refusal kNothingStored{Status::NotFound, "None of the chosen results is stored."};
constexpr Refusal kNothingReadable{Status::Failed, "None of the files of the chosen results can be read."};

constexpr Refusal kPdfBusy{Status::Busy, "Other requests hold the directory where PDFs are made."};
constexpr Refusal kPdfUnusable{Status::Failed, "The directory where PDFs are made cannot be used."};
constexpr Refusal kPdfMissing{Status::Failed, "These documents have no whole PDF: {}."};
constexpr Refusal kPdfObstacle{Status::Failed, "The converter cannot take {}."};

} // namespace refusal

// Writes the strict answer to a request that fails: a page of one sentence. subject replaces "{}". A 405
// names the allowed methods; a 503 says when to try again.
void refuse(const Refusal& refusal, std::string_view subject = "");
