// Templates: which folder a page's templates come from, and the directives "[%NAME argument%]" in
// them. A template belongs to the installation, but what selects it comes with the request: only
// plain names reach a path. What looks like a directive and is none is copied; no input makes the
// processor read a byte twice.

#include <cstdio>
#include <cstring>

#include "host.h"
#include "language.h"
#include "mail/base/bounded_text.h"
#include "mail/base/file.h"
#include "mail/base/text.h"
#include "support.h"

using namespace attalven;

namespace {

bool isWordByte(char c) {
    return isAlpha(c) || isDigit(c) || c == '_';
}

bool isPlainName(string_view name) {
    return !name.empty() && name.size() <= 100 && name.front() != '.' &&
           std::all_of(name.begin(), name.end(),
                       [](char c) { return isWordByte(c) || c == '-' || c == '.'; });
}

OwnedFile openTemplate(string_view language, int number, const char* name) {
    char path[512];
    int n = snprintf(path, sizeof path, "%s/template/%.*s%d/%s", conf.docRootDir,
                     static_cast<int>(language.size()), language.data(), number, name);
    return n < static_cast<int>(sizeof path) ? openRegular(path) : nullptr;
}

void print(string_view s) {
    fwrite(s.data(), 1, s.size(), stdout);
}

/// The row of `name`, the row DEFAULT without one, NULL without either.
const Directive* findRow(const Directive* table, string_view name) {
    const Directive* fallback = nullptr;
    for (; table && (table->name[0] || table->print); table++) {
        string_view key(table->name, strnlen(table->name, sizeof table->name));
        if (key == name) return table;
        if (key == "DEFAULT") fallback = table;
    }
    return fallback;
}

void run(const Directive* table, string_view name, string_view argument) {
    const Directive* row = findRow(table, name);
    if (!row || !row->print) return;
    OwnedText arg = argument.empty() ? nullptr : copyText(argument);
    row->print(arg.get(), row->slot);
}

/// directive = "[%" *blank NAME [blank argument] "%]". Runs the one that starts `s` and takes it
/// off; false if none does.
bool takeDirective(string_view& s, const Directive* table) {
    string_view inside = trimHead(tail(s, 2));
    size_t length = 0;
    while (length < inside.size() && isWordByte(inside[length])) length++;
    string_view rest = tail(inside, length);
    bool ends = !rest.empty() && (isSpace(rest.front()) || rest.starts_with("%]"));
    size_t end = length && ends ? rest.find("%]") : string_view::npos;
    if (end == string_view::npos) return false;
    run(table, head(inside, length), trim(head(rest, end)));
    s = tail(rest, end + 2);
    return true;
}

void processLine(string_view line, const Directive* table) {
    // Behind the last "%]" nothing is a directive; the search for it stays out of the loop.
    size_t last = line.rfind("%]");
    string_view rest = last == string_view::npos ? line : tail(line, last + 2);
    string_view s = head(line, line.size() - rest.size());
    for (size_t at; (at = s.find("[%")) != string_view::npos;) {
        print(head(s, at));
        s = tail(s, at);
        if (takeDirective(s, table)) continue;
        print(head(s, 2));
        s = tail(s, 2);
    }
    print(s);
    print(rest);
}

}  // namespace

char* getTemplateStr(const char* templateName, const char* templateLang) {
    string_view language = viewOf(templateLang);
    if (language.empty()) language = languageCode(getTemplateLang());
    if (!templateName || !isPlainName(templateName) || !isPlainName(language)) return nullptr;
    int number = decimal(requestCookie("tnum").value_or(""));
    OwnedFile f = number > 0 ? openTemplate(language, number, templateName) : nullptr;
    if (!f) f = openTemplate(language, conf.defaultTemplateNum, templateName);
    if (!f) return nullptr;
    char* text = fileStrmGetStr(clampInt(fileStrmGetSize(f.get())), f.get());
    return text ? text : copyText("").release();
}

int getTemplateLang(void) {
    int language = languageNumber(requestCookie("lang").value_or(""));
    if (!language) language = languageNumber(conf.defaultTemplateLang);
    return language ? language : 1;
}

void strmParseDirective(FILE* file, const Directive* table) {
    if (!file) return;
    char* line = nullptr;
    size_t room = 0;
    for (ssize_t n; (n = getline(&line, &room, file)) >= 0;)
        processLine({line, static_cast<size_t>(n)}, table);
    free(line);
}

void pfnPrtStr(const char*, void** slot) {
    if (slot && *slot) fputs(static_cast<const char*>(*slot), stdout);
}

void pfnPrtInt(const char*, void** slot) {
    if (!slot) return;
    int value;
    memcpy(&value, slot, sizeof value);  // what lies at `slot` is an int, not a pointer
    printf("%d", value);
}
