#include "mailwrite_send.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <sstream>

#include "host_texts.h"
#include "kit/folder.h"
#include "kit/page.h"
#include "kit/text.h"
#include "support/host.h"
#include "support/sock.h"
#include "support/support.h"

namespace host {

namespace {

constexpr int kNoServer = 590;

void keep(const User& user, const char* folder, const File& entry) {
    appendToFolder(user, folder, entry.get(), 0, fileStrmGetSize(entry.get()));
}

/// A draft that cannot be removed now stays: one too many is better than one too few.
void removeDraft(const User& user, const std::string& id) {
    if (id.empty()) return;
    try {
        changeFolder(user, "drafts", {{0, id}}, [](Fldr* index, const std::vector<int>& numbers) {
            for (int n : numbers) fldrMsgDelete(n, index);
        });
    } catch (const PageError&) {
    }
}

/// Each address once, whatever fields it stands in.
std::vector<std::string> envelope(const Recipients& recipients) {
    std::vector<Address> all;
    for (const auto* list : {&recipients.to, &recipients.cc, &recipients.bcc})
        for (const Address& a : *list)
            if (std::none_of(all.begin(), all.end(),
                             [&](const Address& b) { return b.isSame(a.mail); }))
                all.push_back(a);
    std::vector<std::string> mails;
    mails.reserve(all.size());
    for (const Address& a : all) mails.push_back(a.mail);
    return mails;
}

std::vector<Delivery> deliver(const std::string& from, const std::vector<std::string>& to,
                              FILE* message) {
    std::string list;
    for (const std::string& mail : to) list += (list.empty() ? "" : ",") + mail;
    sockUseSmtpAdapter(conf.serverName);
    std::string server = mailGetFastestSmtpServer();
    MailSendResult* results = mailRFC822MsgSender(from.c_str(), list.c_str(), conf.mailDomainName,
                                                  server.c_str(), message);
    std::vector<Delivery> deliveries;
    for (const MailSendResult* r = results; r && r->address; r++)
        deliveries.push_back({r->address, r->code});
    mailComposeSendResultFree(results);
    for (const std::string& mail : to)
        if (deliveries.size() < to.size()) deliveries.push_back({mail, kNoServer});
    int last = sockSmtpDataReply();
    for (Delivery& d : deliveries)
        if (d.isTaken() && last / 100 != 2) d.code = last ? last : kNoServer;
    return deliveries;
}

void checkList(const std::vector<Address>& list, const char* field,
               std::vector<Problem>& problems) {
    std::string bad;
    for (const Address& a : list)
        if (!a.isValid()) bad += (bad.empty() ? "" : ", ") + a.mail;
    if (!bad.empty()) problems.push_back({field, message(kTextBadAddress, bad)});
}

std::vector<Problem> problemsOf(const Form& form) {
    std::vector<Problem> problems;
    checkList(parseAddresses(form.to), "to", problems);
    checkList(parseAddresses(form.cc), "cc", problems);
    checkList(parseAddresses(form.bcc), "bcc", problems);
    size_t count = envelope(recipientsOf(form)).size();
    if (count == 0 && problems.empty()) problems.push_back({"to", message(kTextNoRecipient)});
    if (admOptions.oneTimeMailSendNum > 0 &&
        count > static_cast<size_t>(admOptions.oneTimeMailSendNum))
        problems.push_back(
            {"to", message(kTextTooManyRecipients, std::to_string(admOptions.oneTimeMailSendNum))});
    return problems;
}

/// What was not taken, as a draft of its own in place of the whole one.
void keepRest(const Form& form, const std::vector<Delivery>& deliveries, const Sender& sender,
              const User& user, FormFolder& folder) {
    Form rest = form;
    rest.to = rest.cc = rest.bcc = "";
    for (const Delivery& d : deliveries)
        if (!d.isTaken()) rest.to += (rest.to.empty() ? "" : ", ") + d.address;
    saveDraft(rest, sender, user, folder);
}

void noteResults(const std::vector<Delivery>& deliveries, FormFolder& folder) {
    std::string lines;
    for (const Delivery& d : deliveries) lines += std::to_string(d.code) + " " + d.address + "\n";
    folder.setNote("sent", lines);
}

/// The message is on its way: nothing that fails from here on may call for another try.
void settle(const Form& form, const ComposedMessage& sent, const std::vector<Delivery>& deliveries,
            const Sender& sender, const User& user, FormFolder& folder) {
    bool all = std::all_of(deliveries.begin(), deliveries.end(),
                           [](const Delivery& d) { return d.isTaken(); });
    try {
        noteResults(deliveries, folder);
        keep(user, "sent", sent.kept({recipientsOf(form).bcc, ""}));
        if (all) {
            removeDraft(user, folder.note("draft"));
            folder.setNote("draft", "");
        } else {
            keepRest(form, deliveries, sender, user, folder);
        }
        folder.removeFiles();
    } catch (const std::exception&) {
        try {
            folder.setNote("unkept", "1");
        } catch (const std::exception&) {
        }
    }
}

}  // namespace

Recipients recipientsOf(const Form& form) {
    Recipients r{parseAddresses(form.to), parseAddresses(form.cc), parseAddresses(form.bcc)};
    for (auto* list : {&r.to, &r.cc, &r.bcc})
        std::erase_if(*list, [](const Address& a) { return !a.isValid(); });
    return r;
}

void saveDraft(const Form& form, const Sender& sender, const User& user, FormFolder& folder) {
    Form draft = form;
    draft.signature = draft.receipt = false;
    ComposedMessage composed(draft, sender, recipientsOf(form), folder, "UTF-8");
    keep(user, "drafts", composed.kept({recipientsOf(form).bcc, form.packed()}));
    std::string old = folder.note("draft");
    folder.setNote("draft", messageKey(composed.id()));
    removeDraft(user, old);
}

std::vector<Problem> send(const Form& form, const Sender& sender, const User& user,
                          FormFolder& folder, std::vector<Delivery>& deliveries) {
    std::vector<Problem> problems = problemsOf(form);
    Recipients recipients = recipientsOf(form);
    auto charSet = chooseCharSet(form, sender, recipients, folder.files());
    if (!charSet) problems.push_back({"charset", message(kTextCharsetTooSmall)});
    if (!problems.empty()) return problems;
    saveDraft(form, sender, user, folder);
    ComposedMessage composed(form, sender, recipients, folder, *charSet);
    File outgoing = composed.sent();
    // A web server may end its programs when the visitor leaves.
    for (int s : {SIGTERM, SIGHUP, SIGPIPE}) signal(s, SIG_IGN);
    deliveries = deliver(sender.address, envelope(recipients), outgoing.get());
    bool any = std::any_of(deliveries.begin(), deliveries.end(),
                           [](const Delivery& d) { return d.isTaken(); });
    if (any) settle(form, composed, deliveries, sender, user, folder);
    if (!any) problems.push_back({"", message(kTextNotSent)});
    return problems;
}

std::vector<Delivery> sentResults(const FormFolder& folder) {
    std::vector<Delivery> deliveries;
    std::istringstream lines(folder.note("sent"));
    for (std::string line; std::getline(lines, line);) {
        size_t blank = std::min(line.find(' '), line.size() - 1);
        deliveries.push_back({line.substr(blank + 1), atoi(line.c_str())});
    }
    return deliveries;
}

bool isCopyMissing(const FormFolder& folder) {
    return !folder.note("unkept").empty();
}

}  // namespace host
