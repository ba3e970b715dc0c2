// Settings of the site that the web mail obeys, the texts of its mails, and the room that is left.

#include <cstdlib>
#include <cstring>
#include <set>

#include "host_texts.h"
#include "kit/file.h"
#include "kit/text.h"
#include "mail/mail.h"
#include "mailadm.h"
#include "support/support.h"

namespace host {

namespace {

constexpr size_t kTextMax = 8 << 10;

struct NumberField {
    const char* field;
    int MailAdminPreference::*number;
    int least, most;  // 0 and 1: a box
};
constexpr NumberField kNumbers[] = {
    {"recipients", &MailAdminPreference::oneTimeMailSendNum, 1, 1000},
    {"attach_size", &MailAdminPreference::attachFileLimitSize, 1, 1000},
    {"attach_count", &MailAdminPreference::attachFileLimitNum, 1, 100},
    {"default_header_encoding", &MailAdminPreference::defaultHeaderEncoding, 1, 3},
    {"default_body_encoding", &MailAdminPreference::defaultBodyEncoding, 1, 3},
    {"forwarding_allowed", &MailAdminPreference::fwdFlag, 0, 1},
    {"receipts", &MailAdminPreference::mailRcptInfoFlag, 0, 1},
    {"capitals", &MailAdminPreference::allowCaseUserIdFlag, 0, 1},
};

std::string utf8(const char* text) {
    return toUtf8(strSafeAssign(text), "");
}

/// Writes admOptions and reads it again: the library does not tell whether the disk took it.
void save(const SettingsForm& wanted) {
    mailSetAdminPreference(&admOptions);
    mailFreeAdminPreference(&admOptions);
    mailGetAdminPreference(&admOptions);
    SettingsForm stored, asked = wanted;
    loadSiteSettings(stored);
    for (const NumberField& each : kNumbers)
        if (stored[each.field] != asked[each.field]) throw PageError(507, kTextStorageFull);
    for (const char* field : {"welcome", "welcome_subject", "welcome_text", "site_signature"})
        if (stored[field] != asked[field]) throw PageError(507, kTextStorageFull);
}

void runSiteSettings(SettingsForm& form, const Request& request) {
    for (const NumberField& each : kNumbers)
        if (each.most == 1)
            form.takeBox(request, each.field);
        else
            form.takeNumber(request, each.field, each.least, each.most);
    if (!form.isGood()) return;
    for (const NumberField& each : kNumbers) {
        admOptions.*each.number = form.number(each.field);
        form.set(each.field, form.number(each.field));
    }
    save(form);
}

void replaceText(char*& text, const std::string& value) {
    free(text);
    text = strdup(value.c_str());
}

void runSiteTexts(SettingsForm& form, const Request& request) {
    form.takeBox(request, "welcome");
    form.takeLine(request, "welcome_subject", sizeof MailAdminPreference::admMailSubject - 1);
    form.takeLines(request, "welcome_text", kTextMax);
    form.takeLines(request, "site_signature", kTextMax);
    if (form["welcome"] == "1" && form["welcome_text"].empty())
        form.complain("welcome_text", kTextWelcomeEmpty);
    if (!form.isGood()) return;
    admOptions.admMailFlag = form.number("welcome");
    snprintf(admOptions.admMailSubject, sizeof admOptions.admMailSubject, "%s",
             form["welcome_subject"].c_str());
    replaceText(admOptions.admMail, form["welcome_text"]);
    replaceText(admOptions.admSign, form["site_signature"]);
    save(form);
}

/// The folders of storage.ini, of all its sections, and the two roots.
std::set<std::string> partitions() {
    std::set<std::string> found = {conf.mboxRootDir, conf.spoolRootDir};
    std::string lines = readFile(std::string(conf.mboxRootDir) + "/storage.ini").value_or("");
    for (size_t at = 0; at < lines.size();) {
        size_t end = std::min(lines.find('\n', at), lines.size()), slash = lines.find('/', at);
        std::string key = lines.substr(at, 7);
        if ((key.starts_with("SPOOL") || key == "MAILBOX") && slash < end)
            found.insert(lines.substr(slash, end - slash));
        at = end + 1;
    }
    return found;
}

}  // namespace

void loadSiteSettings(SettingsForm& form) {
    for (const NumberField& each : kNumbers) form.set(each.field, admOptions.*each.number);
    std::string subject = utf8(admOptions.admMailSubject);
    form.set("welcome", admOptions.admMailFlag == 1 ? 1 : 0);
    form.set("welcome_subject", subject.substr(0, subject.find('\n')));
    form.set("welcome_text", utf8(admOptions.admMail));
    form.set("site_signature", utf8(admOptions.admSign));
}

std::string partitionRows() {
    const int kSpool = 1, kMailbox = 2;
    std::string spool = strSafeAssign(smGetAvailablePartition(kSpool, nullptr));
    std::string mailbox = strSafeAssign(smGetAvailablePartition(kMailbox, nullptr));
    std::string rows;
    for (const std::string& path : partitions()) {
        std::string use = path == spool ? message(kTextNextSpool) : "";
        if (path == mailbox) use += (use.empty() ? "" : ", ") + message(kTextNextMailbox);
        rows += "<tr><th scope=\"row\">" + escaped(path) + "</th><td class=\"number\">" +
                std::to_string(getDiskFreeSize(path.c_str())) + "</td><td>" + escaped(use) +
                "</td></tr>\n";
    }
    return rows;
}

const AdminAction kSiteSettings = {"site", runSiteSettings};
const AdminAction kSiteTexts = {"texts", runSiteTexts};

}  // namespace host
