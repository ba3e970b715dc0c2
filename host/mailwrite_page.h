#ifndef ATTALVEN_HOST_MAILWRITE_PAGE_H
#define ATTALVEN_HOST_MAILWRITE_PAGE_H

// The compose form and the page behind it.

#include <string>
#include <vector>

#include "mailwrite_send.h"

namespace host {

/// What the form says above its fields.
struct Notes {
    std::vector<Problem> problems;
    std::vector<Delivery> deliveries;  // of a try that reached nobody
    std::string done;                  // such as "Draft saved"
};

void showForm(const Form& form, const Sender& sender, const User& user, const FormFolder& folder,
              const Notes& notes, int status = 200);
void showResults(const User& user, const FormFolder& folder);

}  // namespace host

#endif
