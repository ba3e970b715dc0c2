// The page of a message: who wrote what to whom, its text in a frame, its attachments.

#include <cstdio>
#include <cstdlib>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/part.h"
#include "kit/receipts.h"
#include "kit/text.h"
#include "mailview.h"

namespace host {

namespace {

constexpr size_t kSubjectMax = 1000;  // characters

/// What a callback of the library prints, which is in `set`, as UTF-8.
std::string printed(PrintFn callback, void* bound, const char* set) {
    return toUtf8(captured([&] { callback(nullptr, &bound); }), set);
}

/// The addresses of a header as markup in UTF-8; the library has one list for both of its names.
std::string addresses(const Message& message, const char* header, MailAddress* known) {
    Addresses list = headerAddresses(message.header(header), message.charSet());
    return printed(pfnMailFromRcpt, list ? list.get() : known, "UTF-8");
}

std::string link(const std::string& command, const std::string& query, const std::string& text,
                 const std::string& attributes = "") {
    return "<a href=\"mailview.cgi?cmd=" + command + "&amp;" + escaped(query) + "\"" + attributes +
           ">" + escaped(text) + "</a>";
}

std::string item(const std::string& markup) {
    return "<li>" + markup + "</li>\n";
}

class MessagePage {
  public:
    explicit MessagePage(const View& view)
        : view_(view), message_(view.open()), page_(pageSet().c_str()) {}

    void respond() {
        std::string subject = shortened(message_.subject(), kSubjectMax);
        page_.text("SUBJECT", subject.empty() ? message(kTextNoSubject) : subject);
        page_.text("QUERY", view_.query());
        page_.text("FOLDER", view_.folder.name()).currentFolder(view_.folder.name());
        page_.text("REF", std::to_string(view_.number) + ":" + view_.id());
        bindFields();
        bindLinks();
        std::vector<int> files = message_.attachments();
        std::string rows;
        for (int n : files) rows += fileRow(n);
        page_.markup("FILEROWS", rows);
        page_.markup("FILECOUNT", std::to_string(files.size()));
        include("FILES", "mailview_files.html", !files.empty());
        include("FILELINK", "mailview_filelink.html", !files.empty());
        page_.respond("mailview.html", view_.user);
    }

  private:
    /// The set of the mail, if it is that of a page: the language's otherwise. What it cannot hold
    /// is written by references.
    std::string pageSet() {
        std::string set = mailPageSet(message_.subject(), message_.charSet());
        return set.empty() ? pageLanguage().charSet : set;
    }

    void include(const char* name, const char* file, bool wanted) {
        page_.call(name, [this, file, wanted] {
            if (wanted) page_.print(file);
        });
    }

    void bindFields() {
        const char* own = pageLanguage().charSet;
        MailInfo* info = message_.info();
        page_.markup("FROM", addresses(message_, "From", info->from));
        page_.markup("TO", addresses(message_, "To", info->to));
        page_.markup("CCLIST", addresses(message_, "Cc", info->cc));
        include("CC", "mailview_cc.html", info->cc != nullptr);
        page_.text("DATE", info->dateStr ? toUtf8(mailGetDate(info->date), own) : "-");
        bool isSent = view_.folder.name() == "sent" && view_.path.empty();
        std::string read = isSent ? receiptOf(view_.user, message_.header("Message-ID")) : "";
        page_.text("READ_AT", read);
        include("READ", "mailview_read.html", !read.empty());
        page_.markup("PRIORITY", printed(pfnMailPriority, info, own));
        page_.markup("KIND", printed(pfnMailBodyType, message_.root(), own));
    }

    void bindLinks() {
        std::string around;
        if (!view_.path.empty()) {
            PartPath outer = view_.path;
            outer.pop_back();
            around = item(link("view", view_.query(outer), message(kTextViewOuter)));
        } else {
            around = neighbour(view_.number - 1, kTextViewPrevious) +
                     neighbour(view_.number + 1, kTextViewNext);
        }
        page_.markup("AROUND", around);
        include("ACTIONS", "mailview_actions.html", view_.path.empty());
        int body = message_.bodyPart();
        bool html = body && isType(message_.part(body), kTextType, "html");
        page_.markup("IMAGES",
                     html ? item(link("body", view_.query() + "&images=1",
                                      message(kTextViewShowImages), " target=\"mailtext\""))
                          : "");
        include("SAVETEXT", "mailview_savetext.html", body != 0);
    }

    std::string neighbour(int n, int text) {
        if (n < 1 || n > view_.folder.count()) return {};
        View other{view_.request, view_.user, view_.folder, n, {}};
        return item(link("view", other.query(), message(text)));
    }

    std::string fileRow(int n) {
        MailBody& part = message_.part(n);
        PartPath path = view_.path;
        path.push_back(n);
        std::string query = view_.query(path), name = message_.saveName(n);
        bool opens = isType(part, kMessageType, "rfc822");
        std::string label = " aria-label=\"" + escaped(message(kTextViewSave, name)) + "\"";
        return "<tr><th scope=\"row\">" + link(opens ? "view" : "down", query, name) + "</th><td>" +
               escaped(typeText(part)) + "</td><td>" + sizeText(message_.measure(part).size()) +
               "</td><td>" + link("down", query, message(kTextViewSaveIt), label) + "</td></tr>\n";
    }

    const View& view_;
    Message message_;
    Page page_;
};

}  // namespace

void showPage(const View& view) {
    MessagePage(view).respond();
}

}  // namespace host
