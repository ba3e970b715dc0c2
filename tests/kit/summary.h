#ifndef ATTALVEN_TESTS_KIT_SUMMARY_H
#define ATTALVEN_TESTS_KIT_SUMMARY_H

// A header's summary as one line, from a summary or from the record that must agree with it.

#include <string>

#include "mail/parse/header_summary.h"
#include "mail/parse/mail_addr.h"

namespace kit {

template <typename Values>
std::string summaryLine(std::string_view from, std::string_view subject, std::string_view id,
                        const Values& v) {
    std::string line;
    for (std::string_view text : {from, subject, id}) line += std::string(text) + "|";
    return line + std::to_string(v.priority) + "|" + std::to_string(v.status) + "|" +
           std::to_string(v.date);
}

inline std::string shown(const attalven::HeaderSummary& s) {
    return summaryLine(s.from.view(), s.subject.view(), s.messageId.view(), s);
}

inline std::string shown(const MailInfo& m) {
    return summaryLine(attalven::bareAddress(m.from).view(), attalven::viewOf(m.subject),
                       attalven::viewOf(m.messageId), m);
}

}  // namespace kit

#endif
