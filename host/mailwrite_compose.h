#ifndef ATTALVEN_HOST_MAILWRITE_COMPOSE_H
#define ATTALVEN_HOST_MAILWRITE_COMPOSE_H

// From the form to a message: the choice of the character set, the library's composer, and what is
// put right behind it.

#include <optional>
#include <string>

#include "mailwrite_files.h"
#include "mailwrite_form.h"

namespace host {

/// Who a message goes to.
struct Recipients {
    std::vector<Address> to, cc, bcc;
};

/// The set in which all texts of the message arrive as they were typed, file names included: the
/// form's choice, for the automatic one the first of US-ASCII, the set of the page's language, the
/// others and UTF-8. Nothing when the chosen set lacks a character.
std::optional<std::string> chooseCharSet(const Form& form, const Sender& sender,
                                         const Recipients& recipients,
                                         const std::vector<FormFile>& files);

/// What a copy of the message that is kept in a folder says in addition.
struct Kept {
    std::vector<Address> bcc;
    std::string draft;  // Form::packed() of a draft
};

class ComposedMessage {
  public:
    /// Composes the message in `charSet`. PageError 507 when it could not be written as a whole.
    ComposedMessage(const Form& form, const Sender& sender, const Recipients& recipients,
                    const FormFolder& folder, const std::string& charSet);
    const std::string& id() const { return id_; }
    /// The message as it is sent, and as an entry of a folder.
    File sent() const;
    File kept(const Kept& additions) const;

  private:
    std::string id_, charSet_;
    File composed_;
};

}  // namespace host

#endif
