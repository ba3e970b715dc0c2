// The page kit of the web mail: lists, stale pages, a full disk, forms.

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/kit/folder.h"
#include "host/kit/mbox_scan.h"
#include "host/kit/passwords.h"
#include "host/kit/request.h"
#include "host/kit/summary.h"
#include "kit/calls.h"

namespace {

using host::Summary;

class HostKit : public kit::Site {
  protected:
    HostKit() { admOptions.passwdFlag = 0; }
    host::User kim{"kim", false};
    std::string path(const std::string& folder) { return host::folderPath(kim, folder); }
    void fill(const std::string& folder, const std::string& content) {
        kit::writeFile(path(folder), content);
    }
    /// What the list shows: number, mark, sender, subject.
    std::string list(const std::string& folder) {
        std::string text;
        Summary summary(kim, folder);
        for (const Summary::Row& row : summary.rows())
            text += std::to_string(row.number) + (row.status & FLDR_READ ? "r " : " ") +
                    std::string(row.key) + " " + std::string(row.subject) + "\n";
        return text;
    }
};

std::string mail(const std::string& id, const std::string& subject) {
    return "From a@example.org Mon Jan  5 00:00:00 2004\nFrom: a@example.org\nMessage-ID: <" + id +
           ">\nSubject: " + subject + "\n\ntext\n\n";
}

TEST_F(HostKit, ScanAgreesWithTheIndex) {
    std::string text = kit::readFile(TEST_DATA "/sample.mbox");
    // From_ lines around the end of a block of the scan, whole, cut and quoted.
    for (int shift = -60; shift < 3; shift++) {
        text += mail("s" + std::to_string(shift), "x") + ">From a Mon Jan 1\n";
        size_t block = (text.size() / (1 << 20) + 1) * (1 << 20);
        text += std::string(block - text.size() + static_cast<size_t>(shift + 70) - 71, 'y') + "\n";
    }
    text += "From " + std::string(40000, 'z') + " Mon\nFrom a Xxx Jan 1\nFrom  two\nFrom ";
    kit::File file = kit::fileOf(text);
    Fldr* index = fldrProcessing(file.get());
    std::vector<host::EntrySpan> found = host::MboxScan(fileno(file.get())).messages();
    ASSERT_EQ(static_cast<int>(found.size()), fldrMsgMax(index));
    for (int n = 1; n <= fldrMsgMax(index); n++) {
        EXPECT_EQ(found[static_cast<size_t>(n - 1)].offset, fldrMsgEntryPos(n, index));
        EXPECT_EQ(found[static_cast<size_t>(n - 1)].size, fldrMsgSize(n, index)) << n;
    }
    fldrFree(index);
}

TEST_F(HostKit, EntriesReadAloneAreThoseOfTheIndex) {
    fill("inbox", kit::readFile(TEST_DATA "/sample.mbox"));
    host::Folder folder(kim, "inbox");
    Fldr* index = fldrProcessing(folder.file());
    for (int n = 1; n <= fldrMsgMax(index); n++)
        EXPECT_EQ(memcmp(&folder.entry(n), index->msgs[n - 1], sizeof(FldrMsg)), 0) << n;
    fldrFree(index);
}

TEST_F(HostKit, ListFollowsEveryChange) {
    fill("inbox", mail("1", "one") + mail("2", "two") + mail("3", "three"));
    EXPECT_EQ(list("inbox"), "1 1 one\n2 2 two\n3 3 three\n");
    auto markRead = [](Fldr* index, const std::vector<int>& numbers) {
        for (int n : numbers) fldrMsgSetRead(n, index);
        fldrStatusSet(1);
    };
    host::changeFolder(kim, "inbox", {{3, "3"}}, markRead);
    EXPECT_EQ(list("inbox"), "1 1 one\n2 2 two\n3r 3 three\n");
    // The page was made when "2" was the second: it is the first now, and "1" is gone.
    EXPECT_EQ(host::moveMessages(kim, "inbox", "trash", {{1, "1"}}), 1U);
    EXPECT_EQ(host::moveMessages(kim, "inbox", "trash", {{2, "2"}, {1, "1"}, {9, "no"}}), 1U);
    EXPECT_EQ(list("inbox"), "1r 3 three\n");
    EXPECT_EQ(list("trash"), "1 1 one\n2 2 two\n");
    host::FolderCounts counts = host::folderCounts(kim, "inbox");
    EXPECT_EQ(counts.all * 10 + counts.unread, 10);
    EXPECT_THROW(host::moveMessages(kim, "inbox", "../x", {{1, "3"}}), host::PageError);
}

TEST_F(HostKit, MessagesWithoutIdAreToldApart) {
    const std::string from = "From a@example.org Mon Jan  5 00:00:00 2004\nSubject: ";
    fill("inbox",
         from + "one\n\nx\n\n" + from + "=?euc-kr?B?sKE=?=\n\nx\n\n" + from + "three\n\nx\n\n");
    std::string second;
    {
        Summary summary(kim, "inbox");
        ASSERT_EQ(summary.rows().size(), 3U);
        second = summary.rows()[1].key;
    }
    EXPECT_EQ(host::Folder(kim, "inbox").find(3, second), 2);
    EXPECT_EQ(host::moveMessages(kim, "inbox", "trash", {{1, second}}), 1U);
    Summary trash(kim, "trash");
    ASSERT_EQ(trash.rows().size(), 1U);
    EXPECT_EQ(trash.rows()[0].subject, "가");
}

TEST_F(HostKit, CopiesOfOneMessageAreToldApart) {
    auto copy = [](const std::string& way) {
        return "From a@b Mon Jan  5 00:00:00 2004\nReceived: " + way +
               "\nMessage-ID: <same>\nSubject: " + way + "\n\ntext\n\n";
    };
    fill("inbox", copy("direct") + copy("list"));
    std::vector<std::string> names;
    {
        Summary summary(kim, "inbox");
        for (const Summary::Row& row : summary.rows()) names.push_back(row.name());
    }
    ASSERT_EQ(host::Folder(kim, "inbox").nameOf(2), names[1]);
    EXPECT_EQ(host::moveMessages(kim, "inbox", "trash", {{1, names[1]}}), 1U);
    EXPECT_EQ(list("inbox"), "1 same direct\n");
    EXPECT_EQ(host::moveMessages(kim, "inbox", "trash", {{1, names[1]}}), 0U) << "it is gone";
    EXPECT_EQ(host::Folder(kim, "inbox").find(1, names[1]), 0);
}

TEST_F(HostKit, MessagesAreFoundByAnyId) {
    const std::string ids[] = {"\xB0\xA1+&%41'x", std::string(99, 'y') + "\xB0\xA1z",
                               "\x01 b \x7F"};
    std::string inbox = mail("1", "one");
    for (const std::string& id : ids) inbox += mail(id, "odd");
    for (const std::string& header :
         {"From: " + std::string(120, '\xB0') + "@x",
          std::string("From: a@x\nFrom: b@x\nDate: Mon, 5 Jan 2004 00:00:00 +0000\nDate: no"),
          std::string("Message-ID: <m1>\nMessage-ID: <m2>")})
        inbox += "From a Mon Jan  5 00:00:00 2004\n" + header + "\n\ntext\n\n";
    fill("inbox", inbox);
    std::vector<std::string> keys;
    {
        Summary summary(kim, "inbox");
        host::Folder folder(kim, "inbox");
        for (const Summary::Row& row : summary.rows()) {
            std::string key = keys.emplace_back(row.key);
            for (char c : key) EXPECT_TRUE(c > ' ' && c < '\x7F') << key;
            EXPECT_EQ(folder.find(9, key), row.number) << key;
        }
        EXPECT_EQ(folder.find(2, ids[0]), 2);
        EXPECT_EQ(folder.find(2, "gone"), 0) << "another message has the number now";
    }
    ASSERT_EQ(keys.size(), 7U);
    for (const std::string& key : keys)
        EXPECT_EQ(host::moveMessages(kim, "inbox", "trash", {{5, key}}), 1U) << key;
}

TEST_F(HostKit, SessionEndsWithPasswordAndLock) {
    auto logIn = [] {
        std::string line = host::startSessionLine("kim", time(nullptr));
        EXPECT_EQ(line.find("Secure") != line.npos, getenv("HTTPS") != nullptr) << line;
        std::string value = line.substr(12, line.find(';') - 12);
        setenv("HTTP_COOKIE", value.c_str(), 1);
    };
    auto isIn = [] {
        try {
            return host::currentUser().id == "kim";
        } catch (const host::PageError& error) {
            return error.status != 403;
        }
    };
    std::string file = std::string(conf.mboxRootDir) + "/auth.db";
    std::vector<bool> seen;
    logIn();
    seen.push_back(isIn());  // nobody without a password
    host::setPassword("kim", "one");
    setenv("HTTPS", "on", 1);
    logIn();
    unsetenv("HTTPS");
    seen.push_back(isIn());
    std::string line = kit::readFile(file);
    kit::writeFile(file, "kim:!" + line.substr(4));
    seen.push_back(isIn());
    kit::writeFile(file, line);
    seen.push_back(isIn());
    host::setPassword("kim", "two");
    seen.push_back(isIn());
    EXPECT_EQ(seen, (std::vector<bool>{false, true, false, true, false}));
    unsetenv("HTTP_COOKIE");
}

TEST_F(HostKit, DamagedListIsMadeAgain) {
    fill("inbox", mail("1", "one") + mail("2", "two"));
    std::string expected = list("inbox"), file = kim.home() + "/inbox.list";
    usleep(30000);
    list("inbox");
    std::string content = kit::readFile(file);
    ASSERT_GT(content.size(), 100U);
    for (size_t i = 0; i < content.size(); i += 3) {
        std::string damaged = content;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x11);
        kit::writeFile(file, i % 2 ? damaged : damaged.substr(0, i));
        ASSERT_EQ(list("inbox"), expected) << i;
    }
}

TEST_F(HostKit, FullDiskLosesNothing) {
    std::string inbox = mail("1", "one") + mail("2", std::string(3000, 'x')),
                trash = mail("0", "old");
    fill("inbox", inbox);
    fill("trash", trash);
    signal(SIGXFSZ, SIG_IGN);
    rlimit old, small;
    getrlimit(RLIMIT_FSIZE, &old);
    small = {trash.size() + 500, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    int status = 0;
    try {
        host::moveMessages(kim, "inbox", "trash", {{1, "1"}, {2, "2"}});
    } catch (const host::PageError& error) {
        status = error.status;
    }
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(status, 507);
    EXPECT_EQ(kit::readFile(path("inbox")), inbox);
    EXPECT_EQ(kit::readFile(path("trash")), trash);
    EXPECT_EQ(host::moveMessages(kim, "inbox", "trash", {{2, ""}}), 1U);
    EXPECT_EQ(kit::filesIn(path("inbox").substr(0, path("inbox").rfind('/'))), 1);
}

TEST_F(HostKit, FormsSayWhatWasTyped) {
    admOptions.attachFileLimitSize = 1;
    admOptions.attachFileLimitNum = 1;
    /// Names and values of a form's fields and files, or the status of the error page.
    auto form = [this](kit::Arguments& a) {
        std::string folder = a.size() > 2 ? "" : dir, seen;
        const std::string_view body = a[1];
        kit::writeFile(dir + "/input", body);
        if (!freopen((dir + "/input").c_str(), "r", stdin)) return seen;
        setenv("REQUEST_METHOD", "POST", 1);
        setenv("CONTENT_TYPE", a[0], 1);
        setenv("CONTENT_LENGTH", std::to_string(body.size()).c_str(), 1);
        try {
            host::Request request(folder);
            for (const char* name : {"a", "b"})
                for (const std::string& value : request.values(name))
                    seen += std::string(name) + "=" + value + ";";
            for (const host::Upload& file : request.uploads())
                seen += file.field + ":" + file.name + "(" + file.type +
                        ")=" + kit::readFile(file.path) + ";";
            if (request.lacksFiles()) seen += "too many";
        } catch (const host::PageError& error) {
            seen = std::to_string(error.status);
        }
        return seen;
    };
    kit::runTable("host/forms.table", {{"form", form}});
    for (const auto& entry : std::filesystem::directory_iterator(dir))
        EXPECT_EQ(entry.path().string().find("upload-"), std::string::npos) << "a file was left";
}

}  // namespace
