// Vacation replies and forwarding: what the mail server does with mail that arrives.

#include <cstring>

#include "host_texts.h"
#include "kit/text.h"
#include "mail/mail.h"
#include "mailpref.h"
#include "support/support.h"

namespace host {

namespace {

struct Vacation : MailVacationPref {
    explicit Vacation(const User& user) : MailVacationPref{} {
        mailGetVacationPref(user.id.c_str(), conf.mailDomainName, this);
    }
    ~Vacation() { mailFreeVacationPref(this); }
    Vacation(const Vacation&) = delete;
    Vacation& operator=(const Vacation&) = delete;
};

std::string dateText(time_t when) {
    char text[40];
    snprintf(text, sizeof text, "%04d-%02d-%02d", getYear(when), getMonth(when), getDay(when));
    return text;
}

/// The time of day on the date "2026-11-23"; 0 for what is no date that a setting can hold.
time_t timeOn(const std::string& date, int hour, int minute, int second) {
    int year = 0, month = 0, day = 0, length = 0;
    bool whole = sscanf(date.c_str(), "%4d-%2d-%2d%n", &year, &month, &day, &length) == 3 &&
                 static_cast<size_t>(length) == date.size() && year >= 1971 && year <= 2037;
    if (!whole) return 0;
    time_t when = getTs(year, month, day, hour, minute, second);
    return dateText(when) == date ? when : 0;
}

void loadVacation(SettingsForm& form, const User& user) {
    Vacation vacation(user);
    form.set("vacation", vacation.flag == 1 ? 1 : 0);
    form.set("start", dateText(vacation.startTs));
    form.set("end", dateText(vacation.endTs));
    form.set("subject", toUtf8(vacation.subject, "UTF-8"));
    form.set("reply", toUtf8(vacation.replyText ? vacation.replyText : "", "UTF-8"));
    form.set("reply_signature", vacation.signFlag == 1 ? 1 : 0);
}

void takeVacation(SettingsForm& form, const User&, const Request& request) {
    form.takeBox(request, "vacation");
    form.takeBox(request, "reply_signature");
    form.takeLine(request, "start", 10);
    form.takeLine(request, "end", 10);
    form.takeLine(request, "subject", sizeof MailVacationPref::subject - 1);
    form.takeLines(request, "reply", kReplyMax);
    time_t start = timeOn(form["start"], 0, 0, 0), end = timeOn(form["end"], 23, 59, 59);
    if (!start) form.complain("start", kTextBadDate);
    if (!end) form.complain("end", kTextBadDate);
    if (start && end && end < start) form.complain("end", kTextEndBeforeStart);
    if (form["vacation"] == "1" && form["reply"].empty()) form.complain("reply", kTextReplyEmpty);
}

void saveVacation(SettingsForm& form, const User& user) {
    {
        Vacation vacation(user);  // makes the files: a first save would store the defaults
        free(vacation.replyText);
        vacation.replyText = strdup(form["reply"].c_str());
        vacation.flag = form.number("vacation");
        vacation.signFlag = form.number("reply_signature");
        vacation.startTs = static_cast<int>(timeOn(form["start"], 0, 0, 0));
        vacation.endTs = static_cast<int>(timeOn(form["end"], 23, 59, 59));
        snprintf(vacation.subject, sizeof vacation.subject, "%s", form["subject"].c_str());
        mailSetVacationPref(user.id.c_str(), conf.mailDomainName, &vacation);
    }
    SettingsForm stored;
    loadVacation(stored, user);
    for (const char* field : {"vacation", "start", "end", "subject", "reply", "reply_signature"})
        if (stored[field] != form[field]) throw PageError(507, kTextStorageFull);
    writeMailFilters(user);
}

void loadForwarding(SettingsForm& form, const User& user) {
    MailPreference preference = {};
    mailGetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    form.set("forwarding", toUtf8(preference.forwarding, ""));
    form.set("keep_copy", preference.copyForwardingFlag == 1 ? 1 : 0);
}

void takeForwarding(SettingsForm& form, const User& user, const Request& request) {
    form.takeLine(request, "forwarding", sizeof MailPreference::forwarding - 1);
    form.takeBox(request, "keep_copy");
    const std::string& target = form["forwarding"];
    if (target.empty()) return;
    if (!isMailAddress(target)) form.complain("forwarding", kTextOneAddress);
    if (strCaseCmp(target.c_str(), user.address().c_str()) == 0)
        form.complain("forwarding", kTextOwnAddress);
}

void saveForwarding(SettingsForm& form, const User& user) {
    MailPreference preference = {};
    mailGetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    snprintf(preference.forwarding, sizeof preference.forwarding, "%s", form["forwarding"].c_str());
    preference.copyForwardingFlag = form.number("keep_copy");
    mailSetPreference(user.id.c_str(), conf.mailDomainName, &preference);
    SettingsForm stored;
    loadForwarding(stored, user);
    if (stored["forwarding"] != form["forwarding"] || stored["keep_copy"] != form["keep_copy"])
        throw PageError(507, kTextStorageFull);
    writeMailFilters(user);
}

}  // namespace

bool isMailAddress(const std::string& text) {
    if (text.size() > 100 || !isPlainAddress(text)) return false;
    for (const char* odd : {"..", ".@", "@.", "@-"})
        if (text.find(odd) != text.npos) return false;
    // A mailbox that begins like a file, a pipe or an option means something else to mail servers.
    return !strchr("./|-", text.front()) && text.back() != '.';
}

const PreferenceForm kVacationForm = {"vacation", loadVacation, takeVacation, saveVacation};
const PreferenceForm kForwardingForm = {"forwarding", loadForwarding, takeForwarding,
                                        saveForwarding};

}  // namespace host
