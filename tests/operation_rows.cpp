#include "operation_rows.h"

#include <csetjmp>
#include <filesystem>
#include <map>
#include <utility>

#include "kit/composed.h"
#include "kit/faults.h"
#include "mail/parse/record.h"

namespace fs = std::filesystem;
using std::string;

namespace {

jmp_buf ending;
bool hasEnded;

/// The call under faults; one that ends the process gives `ended`.
template <typename Call>
auto armed(Call call, decltype(call()) ended) {
    exitHook = [](int) { longjmp(ending, 1); };
    hasEnded = true;
    auto result = ended;
    if (setjmp(ending) == 0) {
        faults->armed = 1;
        result = call();
        hasEnded = false;
    }
    faults->armed = 0;
    exitHook = nullptr;
    return result;
}

string line(const char* name, const char* value) {
    return value ? string(name) + "=" + kit::replaced(value, "\n", "\\n") + "\n" : "";
}
string told(int n) {
    return std::to_string(n);
}
string told(const char* text) {
    return text ? text : "(null)";
}
string made(char* text) {
    return kit::taken(text);
}
string made(MailParam* p) {
    string dump;
    for (MailParam* n = p; n; n = n->next) dump += line(n->name, n->value);
    mailFreeParam(&p);
    return dump;
}
string addresses(const MailAddress* a) {
    string dump;
    for (; a; a = a->next)
        dump += line("name", a->name) + line("mailbox", a->mailbox) + line("host", a->host);
    return dump;
}
string made(MailAddress* a) {
    string dump = addresses(a);
    mailFreeAddress(&a);
    return dump;
}
string parts(const MailBody* b) {
    string dump;
    for (; b; b = b->next)
        dump += line("subtype", b->subType) + line("file", b->fileName) + line("id", b->contentId) +
                line("charset", b->charSet) + parts(b->child);
    return dump;
}
string made(MailBody* b) {
    string dump = parts(b);
    mailFreeBody(&b);
    return dump;
}
string made(MailInfo* m) {
    if (!m) return "";
    string dump = addresses(m->from) + addresses(m->to) + line("subject", m->subject) +
                  line("id", m->messageId) + line("date", m->dateStr) + parts(m->body);
    mailFree(&m);
    return dump;
}
string made(MailState* s) {
    mailFreeState(&s);
    return s ? "state" : "";
}
string made(MailBodyList* list) {
    string dump;
    while (list) {
        dump += line("part", list->body->subType);
        free(std::exchange(list, list->next));
    }
    return dump;
}
string made(MailBodyList** index) {
    string dump;
    for (MailBodyList** p = index; p && *p; p++) dump += line("part", (*p)->body->subType);
    mailFreeBodyIdx(index);
    return dump;
}
string made(MailAttach* list) {
    string dump;
    for (MailAttach* a = list; a && a->mimeType; a++)
        dump += line("type", a->mimeType) + line("name", a->name) + line("id", a->msgId);
    mailAttachListFree(list);
    return dump;
}
string made(MailSendResult* list) {
    string dump;
    for (MailSendResult* r = list; r && r->address; r++) dump += line("to", r->address);
    mailComposeSendResultFree(list);
    return dump;
}
string made(Fldr* f) {
    string dump;
    for (int n = 0; n < fldrMsgMax(f); n++)
        dump += line("from", f->msgs[n]->from) + line("id", f->msgs[n]->msgId);
    fldrFree(f);
    return dump;
}

/// Every file of the site with its content.
std::map<string, string> files(const string& dir) {
    std::map<string, string> all;
    for (const auto& e : fs::recursive_directory_iterator(dir))
        if (e.is_regular_file())
            all[e.path().string().substr(dir.size())] = kit::readFile(e.path());
    return all;
}

/// What became of the files: new contents, and "-" for a file that is gone.
template <typename Call>
string changes(const string& dir, Call call) {
    std::map<string, string> before = files(dir);
    kit::outputOf([&] { armed([&] { return call(), 0; }, 0); });
    string dump;
    for (const auto& [path, content] : files(dir)) {
        auto old = before.extract(path);
        if (old.empty() || old.mapped() != content) dump += line(path.c_str(), content.c_str());
    }
    for (const auto& [path, content] : before) dump += "-" + path + "\n";
    return hasEnded ? dump + "ended\n" : dump;
}
template <typename Call>
string written(World& w, Call call) {
    kit::File out(tmpfile());
    w.out = out.get();
    armed([&] { return call(), 0; }, 0);
    return kit::masked(kit::contentOf(out.get()));
}

// How a row shows its result: an owned one, a static one or a number, what was printed, what was
// written to w.out, what became of the site's files.
#define CALL(...) [&] { return __VA_ARGS__; }
#define ROW(rule, shown, ...)                                                                \
    OperationRow {                                                                           \
#__VA_ARGS__, Rule::rule, []([[maybe_unused]] World & w) -> string { return shown; } \
    }
#define MADE(rule, ...) ROW(rule, made(armed(CALL(__VA_ARGS__), nullptr)), __VA_ARGS__)
#define TOLD(rule, ...) ROW(rule, told(armed(CALL(__VA_ARGS__), {})), __VA_ARGS__)
#define FILLED(rule, ...) \
    ROW(rule, (w.buffer[0] = 0, armed(CALL(__VA_ARGS__), 0), w.buffer), __VA_ARGS__)
#define PAGE(rule, ...) \
    ROW(rule, kit::outputOf([&] { armed(CALL(((__VA_ARGS__), 0)), 0); }), __VA_ARGS__)
#define WRITTEN(rule, ...) ROW(rule, written(w, CALL(__VA_ARGS__)), __VA_ARGS__)
#define FILES(rule, ...) \
    ROW(rule, (w.writeFiles(), changes(w.place(), CALL(__VA_ARGS__))), __VA_ARGS__)
#define NOTHING(...) TOLD(kWhole, ((__VA_ARGS__), 0))

const char
    kText[] = "Kim \xB0\xA1\xB3\xAA = <kim@x.org>, http://x.org/ end\n",
    kLong[] = "=?euc-kr?B?sKGzqg==?= and =?utf-8?Q?=EA=B0=80_x?=\n\t=?iso-2022-jp?B?GyRCMEIbKEI=?=",
    kBase64[] = "sKGzqg==\n", kQp[] = "=B0=A1=\n x=3D", kUu[] = "#L*\"S\n",
    kList[] = "\"Kim, A\" <kim@x.org>, =?euc-kr?B?sKE=?= <lee>; park@y.org (P \xB0\xA1)";
char kType[] = "text/plain; charset=\"euc-kr\"; name=a\\\"b; x=y";
char kDate[] = "Fri, 2 Mar 2001 09:05:00 KST";

}  // namespace

std::span<const OperationRow> operationRows() {
    static const OperationRow rows[] = {
#include "operation_rows.inc"
    };
    return rows;
}
