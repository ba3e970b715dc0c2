#ifndef ATTALVEN_HOST_KIT_PAGE_H
#define ATTALVEN_HOST_KIT_PAGE_H

// Pages from templates. A template lies in the language's folder in the language's page character
// set; its directives [%NAME%] are bound to values here, or to print callbacks of the library. A
// page is printed in the character set of its language, or in that of the mail that it shows.

#include <deque>
#include <exception>
#include <functional>
#include <string>

#include "language.h"
#include "request.h"
#include "session.h"
#include "support/support.h"
#include "text.h"

namespace host {

/// Text `number` of the message table in UTF-8, its %d and %s filled.
std::string message(int number);
std::string message(int number, const std::string& value);

class Page {
  public:
    /// A page in `charSet` (NULL: the language's). Binds MSG, whose argument is the number of a
    /// text of the message table, INCLUDE, whose argument is another template, and LANG, CHARSET.
    explicit Page(const char* charSet = nullptr);
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;

    /// [%NAME%] prints: the text, escaped; markup as it is (UTF-8, made by the program itself);
    /// what a callback of the library prints for the slot; what the function prints.
    Page& text(const char* name, const std::string& utf8);
    Page& markup(const char* name, const std::string& utf8);
    Page& callback(const char* name, PrintFn printer, void* bound);
    Page& call(const char* name, std::function<void()> print);
    Page& call(const char* name, std::function<void(const char* arg)> print);

    /// Prints the template `name` with the directives bound.
    void print(const char* name);
    /// The whole response: status, header lines (no script may run, nothing else is loaded, no
    /// page of others may frame it, nothing is kept in caches), and the template.
    void respond(const char* name, int status = 200);
    /// The same for a page with user: binds USER (the id), TOKEN (the hidden field that every form
    /// carries, _charset_ with it) and FOLDERS, the links of the navigation, as well.
    void respond(const char* name, const User& user, int status = 200);

    /// The folder whose link in the navigation is the current one.
    Page& currentFolder(const std::string& name);

    const std::string& charSet() const { return charSet_; }

  private:
    struct Binding {
        std::string name;
        PrintFn print;  // of the library, or Page::run
        void* bound;
        void* slot;  // what the callback may change
        std::function<void(const char* arg)> call;
        Page* page;
    };
    static void run(const char* arg, void** slot);
    Binding& bind(const char* name);
    Page& put(const char* name, std::string page);
    void printFolders(const User& user);

    std::string charSet_, folder_;
    std::exception_ptr failure_;
    std::deque<Binding> bindings_;
};

/// What `print` prints, kept from the response.
std::string captured(const std::function<void()>& print);

/// A header line that stands before the Content-Type line; names and values without line breaks.
void headerLine(const std::string& name, const std::string& value);

/// Ends the header lines, with the type of the content; what fails behind it gets no error page.
void startContent(const char* type);

/// A line "Set-Cookie: ...", LF at the end, for the pages below /cgi-auth/ and for no script;
/// Secure where the request came by HTTPS.
std::string cookieLine(const std::string& name, const std::string& value, const char* sameSite,
                       time_t lifetime);

/// The header line that keeps the choice of the pages' language, "kor" for example. False, and
/// nothing printed, when there is no such language.
bool languageLine(const std::string& code);

/// "303 See Other" to a page of this host after a POST (path and query below /cgi-auth/).
void redirect(const std::string& target);

/// Runs a CGI program: loads the site, runs `body`, prints the error page for a PageError.
int runProgram(const std::function<void()>& body);

}  // namespace host

#endif
