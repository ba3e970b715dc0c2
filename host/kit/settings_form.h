#ifndef ATTALVEN_HOST_KIT_SETTINGS_FORM_H
#define ATTALVEN_HOST_KIT_SETTINGS_FORM_H

// The fields of a settings page: what they hold, and what was wrong with what was sent. Templates
// show them by these directives, FIELD being the name and the id of an input:
//
//   [%VALUE FIELD%]        the value, escaped
//   [%SELECTED FIELD V%]   " selected" when the value is V;  [%CHECKED FIELD V%]: " checked"
//   [%ARIA FIELD HINT%]    attributes that join the input with its complaint and with the element
//                          whose id is HINT (which may be missing)
//   [%COMPLAINT FIELD%]    the paragraph with the complaint, if there is one

#include <map>
#include <string>
#include <string_view>

#include "page.h"
#include "request.h"

namespace host {

class SettingsForm {
  public:
    void set(const std::string& field, const std::string& value) { values_[field] = value; }
    void set(const std::string& field, long value) { set(field, std::to_string(value)); }
    const std::string& operator[](const std::string& field) { return values_[field]; }
    int number(const std::string& field) {
        return static_cast<int>(strtol(values_[field].c_str(), nullptr, 10));
    }

    /// Take a field of the request: one line without blanks around it; lines with LF between them;
    /// a number; one of a few digits; a box that is ticked ("1") or not ("0"). Control bytes are
    /// dropped. A text of more than `most` bytes and a number or digit out of its range are
    /// complained of.
    void takeLine(const Request& request, const std::string& field, size_t most);
    void takeLines(const Request& request, const std::string& field, size_t most);
    void takeNumber(const Request& request, const std::string& field, long least, long most);
    void takeBox(const Request& request, const std::string& field);

    /// Complains of a field; the first complaint stands.
    void complain(const std::string& field, const std::string& text);
    void complain(const std::string& field, int messageNumber);
    bool isGood() const { return complaints_.empty(); }

    /// Binds the directives above, and NOTICE: that something was wrong, or else that the settings
    /// were saved, if the request says so ("saved").
    void bind(Page& page, const Request& request) const;

  private:
    std::string complaintOf(const std::string& field) const;

    std::map<std::string, std::string> values_, complaints_;
};

}  // namespace host

#endif
