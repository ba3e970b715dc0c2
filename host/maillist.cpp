// maillist.cgi: lists a folder, and runs the actions on its messages.

#include "maillist.h"

#include <algorithm>
#include <cstring>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/summary.h"
#include "mail/mail.h"

namespace host {

const std::vector<const char*>& orderNames() {
    static const std::vector<const char*> names = {"date", "from", "subject", "size"};
    return names;
}

ListView::ListView(const Request& request, const User& user)
    : folder(request.has("fldrname") ? request.value("fldrname") : "inbox"),
      page(static_cast<int>(request.number("page", 1, FLDR_MAX_MSGS, 1))) {
    folderPath(user, folder);
    std::string sort = request.value("sort");
    std::string name = sort.starts_with('-') ? sort.substr(1) : sort;
    for (size_t i = 0; i < orderNames().size(); i++)
        if (name == orderNames()[i]) {
            order = static_cast<Order>(i);
            descending = name != sort;
        }
}

std::string ListView::sortName() const {
    return std::string(descending ? "-" : "") + orderNames()[static_cast<size_t>(order)];
}

std::string ListView::query() const {
    return "fldrname=" + folder + "&sort=" + sortName() + "&page=" + std::to_string(page);
}

namespace {

using Row = Summary::Row;

/// Folders of one's own mail show whom it went to.
bool showsRecipients(const std::string& folder) {
    return folder == "sent" || folder == "drafts";
}

/// Below 0, 0, above 0; ASCII letters of either case are the same.
int compareTexts(std::string_view a, std::string_view b) {
    int order = strncasecmp(a.data(), b.data(), std::min(a.size(), b.size()));
    return order ? order : a.size() < b.size() ? -1 : a.size() > b.size() ? 1 : 0;
}

std::vector<const Row*> sorted(const Summary& summary, const ListView& view) {
    std::vector<const Row*> rows;
    for (const Row& row : summary.rows()) rows.push_back(&row);
    auto compare = [&](const Row& a, const Row& b) -> long {
        switch (view.order) {
            case Order::date:
                return a.date < b.date ? -1 : a.date > b.date;
            case Order::from:
                return showsRecipients(view.folder) ? compareTexts(a.to, b.to)
                                                    : compareTexts(a.from, b.from);
            case Order::subject:
                return compareTexts(a.subject, b.subject);
            case Order::size:
                return a.size - b.size;
        }
        return 0;
    };
    std::sort(rows.begin(), rows.end(), [&](const Row* a, const Row* b) {
        long order = compare(*a, *b);
        if (order == 0) order = a->number - b->number;
        return view.descending ? order > 0 : order < 0;
    });
    return rows;
}

struct RowDate {
    char shown[32] = "", exact[32] = "";
};
RowDate dateOf(time_t t) {
    RowDate date;
    struct tm local;
    if (!t || !localtime_r(&t, &local) || local.tm_year < 0 || local.tm_year > 8099) return date;
    strftime(date.shown, sizeof date.shown, "%Y-%m-%d %H:%M", &local);
    strftime(date.exact, sizeof date.exact, "%Y-%m-%dT%H:%M:%S%z", &local);
    return date;
}

int pageSizeOf(const User& user) {
    MailPreference preference = {};
    mailGetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    return std::clamp(preference.pageSize, 5, 200);
}

std::string linkTo(const ListView& view, const Row& row) {
    std::string message = "fldrname=" + view.folder + "&select=" + std::to_string(row.number) +
                          "&msgid=" + urlEncoded(row.name());
    return view.folder == "drafts" ? "mailwrite.cgi?cmd=draft&" + message
                                   : "mailview.cgi?" + message;
}

void printRow(Page& page, const ListView& view, const Row& row, bool checked) {
    std::string who(showsRecipients(view.folder) ? row.to : row.from), subject(row.subject);
    bool unread = !(row.status & FLDR_READ);
    page.markup("CLASS", unread ? "unread" : "read");
    page.call("STATE", [&] {
        if (unread) page.print("maillist_unread.html");
    });
    page.call("PRIORITY", [&] {
        if (row.priority < 3)
            page.text("TEXT", message(80 + row.priority)).print("maillist_priority.html");
    });
    page.text("REF", std::to_string(row.number) + ":" + row.name());
    page.markup("CHECKED", checked ? " checked" : "");
    page.text("LINK", linkTo(view, row));
    page.text("WHO", who.empty() ? message(kTextListNobody) : who);
    page.text("WHAT", subject.find_first_not_of(" \t") == subject.npos ? message(kTextListNoSubject)
                                                                       : subject);
    RowDate date = dateOf(row.date);
    page.text("WHEN", date.shown).text("ISODATE", date.exact);
    page.text("SIZE", sizeText(static_cast<uint64_t>(row.size)));
    page.print("maillist_row.html");
}

/// Binds [%SORTED name%] (attribute of the column's head), [%SORTQUERY name%] (of its link, which
/// turns the order round) and [%ARROW name%].
void bindOrder(Page& page, const ListView& view) {
    auto isOrder = [&view](const char* name) {
        return strcmp(strSafeAssign(name), orderNames()[static_cast<size_t>(view.order)]) == 0;
    };
    auto attribute = [=, &view](const char* name) {
        if (isOrder(name))
            fputs(view.descending ? " aria-sort=\"descending\"" : " aria-sort=\"ascending\"",
                  stdout);
    };
    auto arrow = [=, &view](const char* name) {
        if (isOrder(name))
            fputs(view.descending ? " <span aria-hidden=\"true\">&#9660;</span>"
                                  : " <span aria-hidden=\"true\">&#9650;</span>",
                  stdout);
    };
    auto query = [=, &view](const char* name) {
        bool texts =
            strcmp(strSafeAssign(name), "from") == 0 || strcmp(strSafeAssign(name), "subject") == 0;
        bool descending = isOrder(name) ? !view.descending : !texts;
        printf("fldrname=%s&amp;sort=%s%s", view.folder.c_str(), descending ? "-" : "",
               strSafeAssign(name));
    };
    page.call("SORTED", attribute).call("ARROW", arrow).call("SORTQUERY", query);
}

void bindPager(Page& page, const ListView& view, int pages) {
    auto link = [&page, view, pages](const char* name) {
        ListView target = view;
        std::string which = strSafeAssign(name);
        target.page = which == "first"  ? 1
                      : which == "last" ? pages
                                        : view.page + (which == "next" ? 1 : -1);
        bool there = target.page >= 1 && target.page <= pages && target.page != view.page;
        page.text("PAGELINK", "maillist.cgi?" + target.query());
        if (there) page.print(("maillist_" + which + ".html").c_str());
    };
    page.text("PAGE", std::to_string(view.page)).text("PAGES", std::to_string(pages));
    page.call("PAGER", [&page, pages, link] {
        page.call("GO", link);
        if (pages > 1) page.print("maillist_pager.html");
    });
}

void bindActions(Page& page, const ListView& view) {
    page.call("TARGETS", [&view, &page] {
        for (const FolderName& folder : folderNames())
            if (view.folder != folder.name)
                page.text("TEXT", message(folder.title))
                    .text("NAME", folder.name)
                    .print("maillist_target.html");
    });
    page.call("ACTIONS", [&view, &page] {
        page.print(view.folder == "trash" ? "maillist_trash.html" : "maillist_actions.html");
    });
}

void bindNotice(Page& page, const Request& request) {
    long number = request.number("notice", kTextListMarkedRead, kTextListNoneSelected, 0);
    page.call("NOTICE", [&page, &request, number] {
        std::string count = std::to_string(request.number("n", 0, FLDR_MAX_MSGS, 0));
        if (number)
            page.text("TEXT", message(static_cast<int>(number), count))
                .print("maillist_notice.html");
    });
}

void bindView(Page& page, const ListView& view) {
    for (const FolderName& folder : folderNames())
        if (view.folder == folder.name) page.text("TITLE", message(folder.title));
    page.text("FOLDER", view.folder).text("SORT", view.sortName());
    page.text("PAGE", std::to_string(view.page));
    page.text("QUERY", view.query());
    page.currentFolder(view.folder);
}

void showList(const Request& request, const User& user, ListView view) {
    Summary summary(user, view.folder);
    std::vector<const Row*> rows = sorted(summary, view);
    int size = pageSizeOf(user), count = static_cast<int>(rows.size());
    int pages = std::max(1, (count + size - 1) / size);
    view.page = std::min(view.page, pages);

    Page page;
    bindView(page, view);
    bindOrder(page, view);
    bindPager(page, view, pages);
    bindActions(page, view);
    bindNotice(page, request);
    page.text("ALL", std::to_string(count));
    page.text("UNREAD", std::to_string(summary.counts().unread));
    page.markup("WHOLABEL", showsRecipients(view.folder) ? "to" : "from");
    bool checked = request.value("all") == "1";
    page.call("ROWS", [&] {
        int end = std::min(view.page * size, count);
        for (int i = (view.page - 1) * size; i < end; i++)
            printRow(page, view, *rows[static_cast<size_t>(i)], checked);
    });
    page.call("LIST", [&] { page.print(count ? "maillist_table.html" : "maillist_none.html"); });
    page.call("WHOHEAD", [&] {
        page.print(showsRecipients(view.folder) ? "maillist_to.html" : "maillist_from.html");
    });
    page.respond("maillist.html", user);
}

void run() {
    User user = currentUser();
    Request request;
    ListView view(request, user);
    if (!request.isPost()) return showList(request, user, view);
    checkToken(request, user);
    std::string notice = runAction(request, user, view);
    if (!notice.empty()) return redirect("maillist.cgi?" + view.query() + "&" + notice);
    Page page;
    bindView(page, view);
    page.text("ALL", std::to_string(folderCounts(user, view.folder).all));
    page.respond("maillist_empty.html", user);
}

}  // namespace

}  // namespace host

int main() {
    return host::runProgram(host::run);
}
