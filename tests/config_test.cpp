// The system configuration. mailGetConf() is compiled here with the working directory as its
// folder; it limits the process, so it runs in a child of its own.
#define ATTALVEN_SYSCONFDIR "."
#include <unistd.h>

#include "kit/calls.h"
#include "mail/config/process_setup.cpp"

extern "C" __attribute__((weak)) void __asan_init();

namespace {

class SystemConfig : public kit::Site {
  protected:
    SystemConfig() {
        conf = {};
        if (chdir(dir.c_str()) != 0) abort();
    }
    /// The record that a folder with this first file gives.
    MailConf loaded(std::string_view content) {
        kit::writeFile(dir + "/attalven.conf", content);
        MailConf record = {};
        EXPECT_TRUE(loadSystemConfig(dir.c_str(), record));
        return record;
    }
};

TEST_F(SystemConfig, ReadsLinesByTheStartOfTheirKeys) {
    kit::runTable(
        "config/host_name.table",
        {{"hostName", [this](kit::Arguments& a) { return std::string(loaded(a[0]).hostName); }}});
}

TEST_F(SystemConfig, FillsEveryFieldAndDerivesTheServer) {
    MailConf c = loaded(
        "HOST_NAME = mail\nDOMAIN_NAME = example.org  \nHTTPD_PORT=80x\nHTTPD_ADM_PORT = abc\n"
        "MAIL_DOMAIN_NAME = example.com\nROOT_DIR = /r\nDOC_ROOT_DIR = /d\nSPOOL_ROOT_DIR = /s\n"
        "MBOX_ROOT_DIR = /m\nADMIN_ID = root\nADMIN_KEY = key\nDEFAULT_TEMPLATE_LANG = kor\n"
        "DEFAULT_TEMPLATE_NUM = -2\n");
    std::string dump;
    for (const char* text :
         {c.hostName, c.domainName, c.serverName, c.mailDomainName, c.rootDir, c.docRootDir,
          c.serverUrl, c.spoolRootDir, c.mboxRootDir, c.adminId, c.adminKey, c.defaultTemplateLang})
        dump += std::string(text) + "|";
    EXPECT_EQ(dump,
              "mail|example.org  |mail.example.org  |example.com|/r|/d|http://mail.example.org  |"
              "/s|/m|root|key|kor|");
    EXPECT_EQ(c.httpdPort * 1000 + c.httpdAdmPort * 10 + c.defaultTemplateNum, 79998);

    MailConf wide = loaded("HOST_NAME = " + std::string(5000, 'h') +
                           "\nDOMAIN_NAME = " + std::string(300, 'd') + "\n");
    EXPECT_EQ(wide.serverUrl, "http://" + std::string(50, 'h') + "." + std::string(150, 'd'));
}

TEST_F(SystemConfig, TakesTheFirstFileThatOpens) {
    MailConf record = {};
    record.loadFlag = 7;
    EXPECT_FALSE(loadSystemConfig(dir.c_str(), record));
    EXPECT_EQ(record.loadFlag, 7);
    kit::writeFile(dir + "/corvane.conf", "HOST_NAME = second\n");
    EXPECT_TRUE(loadSystemConfig(dir.c_str(), record));
    EXPECT_STREQ(record.serverName, "second.");
    EXPECT_EQ(record.loadFlag, 0);
    EXPECT_STREQ(loaded("").serverUrl, "http://.");  // empty, but it opens
}

void printSetUp() {
    mailGetConf(&conf);
    struct rlimit core, data;
    getrlimit(RLIMIT_CORE, &core);
    getrlimit(RLIMIT_DATA, &data);
    printf("%s %s %s %ld %ld", conf.serverName, conf.adminId, conf.adminKey,
           static_cast<long>(core.rlim_max), static_cast<long>(data.rlim_max));
    MailConf other = {};
    mailGetConf(&other);  // keys that are absent keep their values
    printf(" %s %s", other.serverUrl, other.adminId);
    exit(0);
}

TEST_F(SystemConfig, GetConfSetsUpTheProcess) {
    if (__asan_init) GTEST_SKIP() << "AddressSanitizer does not run under the data limit";
    auto run = [](int status) {
        return kit::outputOf(
            [&] { EXPECT_EXIT(printSetUp(), testing::ExitedWithCode(status), ""); });
    };
    EXPECT_EQ(run(255), "Content-Type: text/html\n\n./attalven.conf file open error!!!");
    kit::writeFile(dir + "/attalven.conf", "HOST_NAME = a\nDOMAIN_NAME = b\n");
    EXPECT_EQ(run(0), "a.b sysop kQwZbn 0 100000000 http://a.b sysop");
}

}  // namespace
