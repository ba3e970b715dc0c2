#ifndef ATTALVEN_HOST_MAILWRITE_SEND_H
#define ATTALVEN_HOST_MAILWRITE_SEND_H

// What becomes of a filled form. At every moment at least one folder of the user holds the message:
// it is a draft before it is sent, and stays one until the sent copy is kept.

#include <string>
#include <vector>

#include "mailwrite_compose.h"

namespace host {

/// What the server said of a recipient: an SMTP reply code, 590 when no server was reached.
struct Delivery {
    std::string address;
    int code;
    bool isTaken() const { return code / 100 == 2; }
};

/// What is wrong with a form: the name of a field ("" for all of it) and what to do.
struct Problem {
    std::string field, text;
};

/// The addresses of the form, what SMTP cannot carry left out.
Recipients recipientsOf(const Form& form);

/// Stores the form as a draft in place of the one it had. PageError 503, 507.
void saveDraft(const Form& form, const Sender& sender, const User& user, FormFolder& folder);

/// Sends the form. `deliveries` tells what became of each recipient when it was sent; it is empty,
/// and the form unchanged but for its draft, when there are problems. What only some did not get
/// stays as a draft to these.
std::vector<Problem> send(const Form& form, const Sender& sender, const User& user,
                          FormFolder& folder, std::vector<Delivery>& deliveries);

/// The form was sent: the results that stay for its result page; empty for a form that was not.
std::vector<Delivery> sentResults(const FormFolder& folder);
/// Whether the copy could not be kept in the folder "sent", so that the draft stays.
bool isCopyMissing(const FormFolder& folder);

}  // namespace host

#endif
