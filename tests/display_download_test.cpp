// Download responses: what depends on the browser, on made records and on the size.

#include <sys/resource.h>

#include "kit/message.h"

namespace {

using kit::outputOf;

const char kType[] = "Content-Type: application/octet-stream\n",
           kName[] = "Content-disposition: form-data; name=\"filename\"; filename=a.pdf\n\n";

TEST(Download, BrowsersAndDoubleNames) {
    const struct {
        const char *browser, *name;
    } rows[] = {
        {"Mozilla/4.0 (compatible; MSIE 4.0; Windows 98)", "\n"},
        {"Mozilla/4.0 (compatible; MSIE 5.0; Windows 98)", "\n"},
        {"Mozilla/4.0 (compatible; MSIE 5.01; Windows NT)", kName},
        {"Mozilla/5.0 (X11; Linux)", kName},
    };
    const char* part = "application/x; name=a.pdf\n\nx";
    kit::Message msg(kit::mixed({part, part}));
    auto saved = [&](const char* name) {
        return outputOf([&] { mailSaveAttachFile(msg.info, 0, name, 0, msg.file.get()); });
    };
    for (const auto& row : rows) {
        setenv("HTTP_USER_AGENT", row.browser, 1);
        std::string one = std::string(kType) + row.name + "x\n";
        EXPECT_EQ(saved("a.pdf"), one + one);
    }
    EXPECT_EQ(saved("A.pdf"), "");
}

TEST(Download, TypesStayInTheirLine) {
    kit::Message msg("Content-Type: image/gif\nContent-ID: <c>\n\nx");
    MailBody* root = msg.info->body;
    root->contentId = strdup("c");
    root->type = 99;
    free(root->subType);
    root->subType = strdup(("a\n\nb" + std::string(200, 's')).c_str());
    EXPECT_EQ(outputOf([&] { mailViewCIDFile(msg.info, 0, 0, "c", 0, msg.file.get()); }),
              "Content-Type: x-unknown/ab" + std::string(88, 's') + "\n\nx");
}

TEST(Download, RawMessage) {
    // The line of 999 characters comes in two pieces, the second an LF alone.
    const std::string header = "A: b\n" + std::string(999, 'h') + "\nC: d\r\n";
    kit::Message msg("before\n" + header + "\r\nbody\n", 7);
    auto raw = [&](int mode) {
        return outputOf([&] { mailViewRFC822(msg.info, mode, 0, msg.file.get()); });
    };
    EXPECT_EQ(raw(1), header + "\r\nbody\n");
    EXPECT_EQ(raw(2), header);
}

// A large attachment (a sparse file) needs no more memory than a small one.
TEST(Download, ConstantMemory) {
    kit::Message msg("Content-Type: application/x; name=big\n\n");
    ASSERT_EQ(ftruncate(fileno(msg.file.get()), 16 << 20), 0);
    kit::File sink(fopen("/dev/null", "w"));
    auto peakAfter = [&](int code, int size) {
        msg.info->body->encoding = code;
        msg.info->body->bodySize = size;
        mailDecodeAttachFile(msg.info->body, msg.file.get(), sink.get());
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    for (int code : {0, 2, 3, 7}) {
        long small = peakAfter(code, 1 << 20);
        EXPECT_LT(peakAfter(code, 16 << 20) - small, 1024) << "KiB, encoding " << code;
    }
}

}  // namespace
