#include "site.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace kit {

File fileOf(std::string_view content) {
    File f(tmpfile());
    if (!f) abort();
    if (!content.empty() && fwrite(content.data(), 1, content.size(), f.get()) != content.size())
        abort();
    rewind(f.get());
    return f;
}

std::string contentOf(FILE* f) {
    std::string all;
    char block[4096];
    fflush(f);
    rewind(f);
    for (size_t n; (n = fread(block, 1, sizeof block, f)) > 0;) all.append(block, n);
    return all;
}

std::string readFile(const std::string& path) {
    File f(fopen(path.c_str(), "rb"));
    return f ? contentOf(f.get()) : "";
}

void writeFile(const std::string& path, std::string_view content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary)
        .write(content.data(), static_cast<std::streamsize>(content.size()));
}

std::string memoryFolder() {
    char memory[] = "/dev/shm/attalven-test-XXXXXX", disk[] = "/tmp/attalven-test-XXXXXX";
    const char* made = mkdtemp(memory);
    if (!made) made = mkdtemp(disk);
    if (!made) abort();
    return made;
}

int modeOf(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 ? static_cast<int>(st.st_mode & 07777) : -1;
}

int filesIn(const std::string& path) {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(path), {}));
}

std::string taken(char* text) {
    std::string s = text ? text : "(null)";
    free(text);
    return s;
}

std::string outputOf(const std::function<void()>& call) {
    File out(tmpfile());
    if (!out) abort();
    fflush(stdout);
    int saved = dup(STDOUT_FILENO);
    dup2(fileno(out.get()), STDOUT_FILENO);
    call();
    fflush(stdout);
    dup2(saved, STDOUT_FILENO);
    close(saved);
    return contentOf(out.get());
}

std::string outputOfShell(const std::string& line) {
    int status = -1;
    std::string output = outputOf([&] { status = system(line.c_str()); });
    return std::to_string(WEXITSTATUS(status)) + " " + output;
}

Site::Site() {
    char name[] = "/tmp/attalven-test-XXXXXX";
    if (!mkdtemp(name)) abort();
    dir = name;
    conf = {};
    admOptions = {};
    auto set = [](auto& field, const std::string& value) {
        snprintf(field, sizeof field, "%s", value.c_str());
    };
    set(conf.hostName, "mail");
    set(conf.domainName, "example.org");
    set(conf.serverName, "mail.example.org");
    set(conf.mailDomainName, "example.org");
    set(conf.serverUrl, "http://mail.example.org");
    set(conf.rootDir, dir + "/root");
    set(conf.docRootDir, dir + "/doc");
    set(conf.spoolRootDir, dir + "/spool");
    set(conf.mboxRootDir, dir + "/mbox");
    set(conf.adminId, "sysop");
    set(conf.adminKey, "kQwZbn");
    set(conf.defaultTemplateLang, "eng");
    for (const char* sub : {"/root/conf", "/doc/template", "/spool", "/mbox"})
        std::filesystem::create_directories(dir + sub);
    admOptions.defaultHeaderEncoding = 3;
    admOptions.defaultBodyEncoding = 3;
    unsetenv("HTTP_COOKIE");
}

Site::~Site() {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
}

}  // namespace kit
