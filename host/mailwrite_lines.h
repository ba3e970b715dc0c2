#ifndef ATTALVEN_HOST_MAILWRITE_LINES_H
#define ATTALVEN_HOST_MAILWRITE_LINES_H

// The last step of a composed message. The composer writes long header texts as encoded words of 42
// bytes each, wherever a character or a shift state ends; many readers decode word by word (RFC
// 2047 section 5 demands words that stand alone), so such runs are written anew, whole characters a
// word.

#include <cstdio>
#include <string>

namespace host {

/// The header field that holds the form of a draft.
constexpr const char* kDraftField = "X-Draft-Form";

/// For a folder, lines that start with "From " get a ">" in front, so that none starts a message.
enum class CopyFor { kSending, kFolder };

/// Copies the mbox entry `in` with its header words put right and `fields`, whole header lines,
/// added at the start of its header.
void copyMessage(FILE* in, const std::string& fields, CopyFor purpose, FILE* out);

/// A header value in which runs of words of one set are whole characters a word.
std::string withWholeWords(const std::string& value);

}  // namespace host

#endif
