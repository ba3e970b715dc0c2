#include "page.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "folder.h"
#include "host_texts.h"
#include "mail/mail.h"
#include "summary.h"
#include "support/page.h"

namespace host {

namespace {

constexpr const char* kContentSecurityPolicy =
    "default-src 'none'; style-src 'self'; img-src 'self' data:; form-action 'self'; "
    "frame-src 'self'; frame-ancestors 'self'; base-uri 'none'";

void write(const std::string& bytes) {
    fwrite(bytes.data(), 1, bytes.size(), stdout);
}

const char* reason(int status) {
    switch (status) {
        case 200:
            return "OK";
        case 400:
            return "Bad Request";
        case 403:
            return "Forbidden";
        case 404:
            return "Not Found";
        case 413:
            return "Content Too Large";
        case 422:
            return "Unprocessable Content";
        case 429:
            return "Too Many Requests";
        case 503:
            return "Service Unavailable";
        case 507:
            return "Insufficient Storage";
        default:
            return "Error";
    }
}

/// The template of the language in `charSet`; nothing without such a file.
std::string templateText(const char* name, const std::string& charSet) {
    char* text = getTemplateStr(name, nullptr);
    if (!text) throw PageError(500, kTextInternalError);
    std::string content = takeText(text);
    const char* own = pageLanguage().charSet;
    return charSet == own ? content : toPage(toUtf8(content, own), charSet.c_str());
}

/// The site has no templates, or its disk cannot be read: the message without them.
void printPlainError(const PageError& error) {
    printf("Status: %d %s\n", error.status, reason(error.status));
    startContent("text/plain; charset=utf-8");
    printf("%d %s\n%s\n", error.status, reason(error.status), message(error.message).c_str());
}

void printError(const PageError& error) {
    try {
        Page page;
        page.text("ERROR", message(error.message));
        page.markup("STATUS", std::to_string(error.status));
        page.respond("error.html", error.status);
    } catch (const std::exception&) {
        printPlainError(error);
    }
}

/// A folder that cannot be read now must not keep the page of another one from the user.
FolderCounts countsOf(const User& user, const char* folder) {
    try {
        return folderCounts(user, folder);
    } catch (const PageError&) {
        return {};
    }
}

bool responded;  // a header has gone out: an error page can follow no more

}  // namespace

std::string message(int number) {
    std::string directory = std::string(conf.rootDir) + "/conf";
    const char* text = msgGet(directory.c_str(), number, getTemplateLang());
    return toUtf8(strSafeAssign(text), pageLanguage().charSet);
}

std::string message(int number, const std::string& value) {
    std::string text = message(number);
    size_t at = text.find('%');
    if (at != std::string::npos &&
        (text.compare(at, 2, "%d") == 0 || text.compare(at, 2, "%s") == 0))
        text.replace(at, 2, value);
    return text;
}

Page::Page(const char* charSet) : charSet_(charSet ? charSet : pageLanguage().charSet) {
    markup("LANG", pageLanguage().tag);
    markup("CHARSET", htmlCharSet(charSet_.c_str()));
    call("MSG", [this](const char* arg) {
        write(toPage(escaped(message(arg ? atoi(arg) : 0)), charSet_.c_str()));
    });
    call("INCLUDE", [this](const char* arg) { print(arg ? arg : ""); });
}

/// Runs inside the template engine, which is C: no exception passes through it.
void Page::run(const char* arg, void** slot) {
    auto* binding = static_cast<Binding*>(*slot);
    if (binding->page->failure_) return;
    try {
        binding->call(arg);
    } catch (...) {
        binding->page->failure_ = std::current_exception();
    }
}

Page::Binding& Page::bind(const char* name) {
    for (Binding& binding : bindings_)
        if (binding.name == name) return binding;
    bindings_.push_back({name, run, nullptr, nullptr, nullptr, this});
    return bindings_.back();
}

Page& Page::call(const char* name, std::function<void(const char* arg)> print) {
    Binding& binding = bind(name);
    binding.print = run;
    binding.bound = &binding;
    binding.call = std::move(print);
    return *this;
}

Page& Page::call(const char* name, std::function<void()> print) {
    return call(name, [print = std::move(print)](const char*) { print(); });
}

Page& Page::put(const char* name, std::string page) {
    return call(name, [page = std::move(page)](const char*) { write(page); });
}

Page& Page::text(const char* name, const std::string& utf8) {
    return put(name, toPage(escaped(utf8), charSet_.c_str()));
}

Page& Page::markup(const char* name, const std::string& utf8) {
    return put(name, toPage(utf8, charSet_.c_str()));
}

Page& Page::callback(const char* name, PrintFn printer, void* bound) {
    Binding& binding = bind(name);
    binding.print = printer;
    binding.bound = bound;
    return *this;
}

Page& Page::currentFolder(const std::string& name) {
    folder_ = name;
    return *this;
}

void Page::print(const char* name) {
    std::string content = templateText(name, charSet_);
    if (content.empty()) return;
    std::vector<Directive> table;
    for (Binding& binding : bindings_) {
        binding.slot = binding.bound;
        Directive row{};
        snprintf(row.name, sizeof row.name, "%s", binding.name.c_str());
        row.print = binding.print;
        row.slot = &binding.slot;
        table.push_back(row);
    }
    table.push_back({});
    FILE* file = fmemopen(content.data(), content.size(), "r");
    if (!file) throw PageError(500, kTextInternalError);
    strmParseDirective(file, table.data());
    fclose(file);
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
}

void Page::respond(const char* name, int status) {
    // As a whole before its header: what fails on the way gets an error page.
    std::string content = captured([this, name] { print(name); });
    headerLine("Status", std::to_string(status) + " " + reason(status));
    headerLine("Content-Security-Policy", kContentSecurityPolicy);
    headerLine("X-Content-Type-Options", "nosniff");
    headerLine("Referrer-Policy", "same-origin");
    headerLine("Cache-Control", "no-store");
    pageSetCharSet(htmlCharSet(charSet_.c_str()));
    startContent("text/html");
    write(content);
}

void Page::respond(const char* name, const User& user, int status) {
    text("USER", user.id);
    markup("TOKEN", "<input type=\"hidden\" name=\"token\" value=\"" + escaped(formToken(user)) +
                        "\"><input type=\"hidden\" name=\"_charset_\">");
    call("FOLDERS", [this, &user] { printFolders(user); });
    respond(name, status);
}

void Page::printFolders(const User& user) {
    for (const FolderName& folder : folderNames()) {
        FolderCounts counts = countsOf(user, folder.name);
        text("FOLDERNAME", folder.name).text("FOLDERTITLE", message(folder.title));
        markup("FOLDERCURRENT", folder_ == folder.name ? " aria-current=\"page\"" : "");
        text("FOLDERUNREAD", std::to_string(counts.unread));
        text("FOLDERALL", std::to_string(counts.all));
        print("folder.html");
    }
}

std::string captured(const std::function<void()>& print) {
    char* text = nullptr;
    size_t size = 0;
    FILE* memory = open_memstream(&text, &size);
    if (!memory) throw std::bad_alloc();
    FILE* response = std::exchange(stdout, memory);
    std::exception_ptr failure;
    try {
        print();
    } catch (...) {
        failure = std::current_exception();
    }
    stdout = response;
    bool whole = !ferror(memory);
    whole = fclose(memory) == 0 && whole;
    std::unique_ptr<char, void (*)(void*)> owned(text, free);
    if (failure) std::rethrow_exception(failure);
    if (!whole) throw std::bad_alloc();
    return {text, size};
}

void startContent(const char* type) {
    responded = true;
    cgiMimeHeader(type);
}

void headerLine(const std::string& name, const std::string& value) {
    std::string line = name + ": " + value;
    std::erase_if(line, [](char c) { return (c >= 0 && c < ' ') || c == '\x7F'; });
    write(line + "\n");
}

std::string cookieLine(const std::string& name, const std::string& value, const char* sameSite,
                       time_t lifetime) {
    bool encrypted = strCaseCmp(strSafeAssign(getenv("HTTPS")), "on") == 0;
    return "Set-Cookie: " + name + "=" + value +
           "; Path=/cgi-auth/; HttpOnly; SameSite=" + sameSite + (encrypted ? "; Secure" : "") +
           "; Max-Age=" + std::to_string(lifetime) + "\n";
}

bool languageLine(const std::string& code) {
    for (const Language& language : languages())
        if (code == language.code) {
            write(cookieLine("lang", code, "Lax", 365 * 24 * 3600L));
            return true;
        }
    return false;
}

void redirect(const std::string& target) {
    headerLine("Status", "303 See Other");
    headerLine("Location", "/cgi-auth/" + target);
    headerLine("Cache-Control", "no-store");
    startContent("text/plain; charset=utf-8");
}

int runProgram(const std::function<void()>& body) {
    try {
        loadSite();
        body();
    } catch (const PageError& error) {
        if (!responded) printError(error);
    } catch (const std::exception& error) {
        fprintf(stderr, "%s\n", error.what());
        if (!responded) printError(PageError(500, kTextInternalError));
    }
    return fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace host
