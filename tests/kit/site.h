#ifndef ATTALVEN_TESTS_KIT_SITE_H
#define ATTALVEN_TESTS_KIT_SITE_H

// What most tests need: a temporary site with `conf` and `admOptions` filled, streams made of
// texts, and the standard output of a call.

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "mail/mail.h"
#include "support/support.h"

namespace kit {

/// AddressSanitizer cannot live under the data limit that mailGetConf() sets.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAddressSanitizer = true;
#elif defined(__has_feature)
constexpr bool kAddressSanitizer = __has_feature(address_sanitizer);
#else
constexpr bool kAddressSanitizer = false;
#endif

struct CloseFile {
    void operator()(FILE* f) const { fclose(f); }
};
using File = std::unique_ptr<FILE, CloseFile>;

/// A temporary stream that holds `content`, positioned at its start.
File fileOf(std::string_view content);
/// All that the stream holds from its start.
std::string contentOf(FILE* f);
std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view content);
/// A new folder, in memory where that is possible.
std::string memoryFolder();

/// Permission bits, -1 when nothing is there.
int modeOf(const std::string& path);
/// How many entries a directory has.
int filesIn(const std::string& path);
/// A heap text as a string ("(null)" for NULL); frees it.
std::string taken(char* text);
/// What `call` wrote to the process's standard output.
std::string outputOf(const std::function<void()>& call);
/// Exit code, blank and standard output of a shell line.
std::string outputOfShell(const std::string& line);

/// A fixture with a temporary folder `dir` and fresh records: conf.rootDir, docRootDir,
/// spoolRootDir and mboxRootDir lie below `dir` and exist; mail domain example.org, host
/// mail.example.org, administrator sysop.
class Site : public ::testing::Test {
  protected:
    Site();
    ~Site() override;
    std::string dir;
};

}  // namespace kit

#endif
