#include "mailwrite_page.h"

#include <algorithm>
#include <cstdlib>

#include "host_texts.h"
#include "kit/page.h"
#include "kit/text.h"
#include "support/host.h"

namespace host {

namespace {

struct Choice {
    const char* value;
    int text;  // number in the message table; 0: the value says it
};
constexpr Choice kSets[] = {{kAutomaticSet, kTextSetAutomatic}, {"euc-kr", kTextSetKorean},
                            {"iso-2022-jp", kTextSetJapanese},  {"gb2312", kTextSetSimplified},
                            {"big5", kTextSetTraditional},      {"iso-8859-1", kTextSetWestern},
                            {"UTF-8", kTextSetUnicode}};
constexpr Choice kFormats[] = {{"plain", kTextFormatPlain}, {"html", kTextFormatHtml}};
constexpr Choice kEncodings[] = {
    {"3", kTextEncodingBase64}, {"2", kTextEncodingQuoted}, {"1", kTextEncodingRaw}};
constexpr Choice kPriorities[] = {{"1", 81}, {"2", 82}, {"3", 83}, {"4", 84}, {"5", 85}};

template <size_t N>
std::string options(const Choice (&choices)[N], const std::string& chosen) {
    std::string markup;
    for (const Choice& c : choices)
        markup += std::string("<option value=\"") + c.value + "\"" +
                  (chosen == c.value ? " selected" : "") + ">" + escaped(message(c.text)) +
                  "</option>\n";
    return markup;
}

std::string deliveryText(const Delivery& d) {
    std::string code = std::to_string(d.code);
    if (d.isTaken()) return message(kTextResultTaken);
    if (d.code == 590) return message(kTextResultNoServer);
    return message(d.code / 100 == 4 ? kTextResultLater : kTextResultRefused, code);
}

std::string deliveryRows(const std::vector<Delivery>& deliveries) {
    std::string rows;
    for (const Delivery& d : deliveries)
        rows += "<tr><th scope=\"row\">" + escaped(d.address) + "</th><td>" +
                escaped(deliveryText(d)) + "</td></tr>\n";
    return rows;
}

/// "" or a table of what the server said.
std::string deliveryTable(const std::vector<Delivery>& deliveries) {
    if (deliveries.empty()) return "";
    return "<table class=\"results\">\n<thead><tr><th scope=\"col\">" +
           escaped(message(kTextRecipient)) + "</th><th scope=\"col\">" +
           escaped(message(kTextResult)) + "</th></tr></thead>\n<tbody>\n" +
           deliveryRows(deliveries) + "</tbody>\n</table>\n";
}

std::string fileItem(const FormFile& file) {
    std::string what = file.name;
    if (file.kind == FileKind::kImage)
        what = "[image " + std::to_string(atoi(file.key.c_str() + 1)) + "] " + what;
    if (file.kind == FileKind::kForwarded) what = message(kTextForwardedMessage, what);
    std::string remove = escaped(message(kTextRemoveFile, file.name));
    return "<li><span>" + escaped(what) + " (" + sizeText(static_cast<uint64_t>(file.size)) +
           ")</span> <button name=\"action\" value=\"remove:" + file.key + "\" aria-label=\"" +
           remove + "\">" + escaped(message(kTextRemove)) + "</button></li>\n";
}

std::string fileList(const FormFolder& folder) {
    std::string items;
    for (const FormFile& file : folder.files()) items += fileItem(file);
    return items.empty() ? "" : "<ul class=\"files\">\n" + items + "</ul>\n";
}

/// Binds what a field needs to say its hint and its problem: NAME_STATE for the field's tag, and
/// NAME_PROBLEM.
void bindProblem(Page& page, const char* directive, const std::string& field,
                 const std::string& hint, const std::vector<Problem>& all) {
    std::string text, described = hint;
    for (const Problem& p : all)
        if (p.field == field) text += (text.empty() ? "" : " ") + p.text;
    std::string id = field + "-problem";
    if (!text.empty()) described += (hint.empty() ? "" : " ") + id;
    std::string state = text.empty() ? "" : "aria-invalid=\"true\" ";
    if (!described.empty()) state += "aria-describedby=\"" + described + "\"";
    std::string name = directive;
    page.markup((name + "_STATE").c_str(), state);
    page.markup(
        (name + "_PROBLEM").c_str(),
        text.empty() ? "" : "<p class=\"error\" id=\"" + id + "\">" + escaped(text) + "</p>");
}

std::string noteMarkup(const Notes& notes) {
    std::string markup;
    if (!notes.done.empty())
        markup += "<p role=\"status\" class=\"notice\">" + escaped(notes.done) + "</p>\n";
    if (notes.problems.empty()) return markup;
    markup += "<div role=\"alert\" class=\"error\">\n";
    for (const Problem& p : notes.problems) markup += "<p>" + escaped(p.text) + "</p>\n";
    return markup + "</div>\n" + deliveryTable(notes.deliveries);
}

std::string checkbox(const char* name, int label, bool isChecked) {
    return std::string("<p class=\"check\"><input type=\"checkbox\" id=\"") + name + "\" name=\"" +
           name + "\" value=\"1\"" + (isChecked ? " checked" : "") + "> <label for=\"" + name +
           "\">" + escaped(message(label)) + "</label></p>\n";
}

}  // namespace

void showForm(const Form& form, const Sender& sender, const User& user, const FormFolder& folder,
              const Notes& notes, int status) {
    Page page;
    page.text("FORM", form.id).text("TO", form.to).text("CC", form.cc).text("BCC", form.bcc);
    page.text("SUBJECT", form.subject).text("BODY", form.body);
    page.text("FROM", Address{sender.name, sender.address}.text());
    page.markup("NOTES", noteMarkup(notes));
    bindProblem(page, "TO", "to", "to-hint", notes.problems);
    bindProblem(page, "CC", "cc", "", notes.problems);
    bindProblem(page, "BCC", "bcc", "", notes.problems);
    bindProblem(page, "CHARSET", "charset", "", notes.problems);
    bindProblem(page, "FILES", "files", "files-hint", notes.problems);
    page.markup("FILES", fileList(folder));
    page.text("FILE_LIMITS",
              message(kTextFileLimits, std::to_string(admOptions.attachFileLimitSize)));
    page.markup("FORMATS", options(kFormats, form.isHtml ? "html" : "plain"));
    page.markup("CHARSETS", options(kSets, form.charSet));
    page.markup("HEADER_ENCODINGS", options(kEncodings, std::to_string(form.headerEncoding)));
    page.markup("BODY_ENCODINGS", options(kEncodings, std::to_string(form.bodyEncoding)));
    page.markup("PRIORITIES", options(kPriorities, std::to_string(form.priority)));
    page.markup("RECEIPT", checkbox("receipt", kTextReceipt, form.receipt));
    page.markup("SIGNATURE", sender.signature.empty()
                                 ? ""
                                 : checkbox("signature", kTextSignature, form.signature));
    page.markup("DETAILS_STATE", form.charSet == kAutomaticSet ? "" : "open");
    page.respond("write.html", user, status);
}

void showResults(const User& user, const FormFolder& folder) {
    std::vector<Delivery> deliveries = sentResults(folder);
    if (deliveries.empty()) throw PageError(404, kTextNoSuchForm);
    auto failed = std::count_if(deliveries.begin(), deliveries.end(),
                                [](const Delivery& d) { return !d.isTaken(); });
    std::string draft = folder.note("draft"), more;
    if (failed && !draft.empty())
        more += "<p><a href=\"mailwrite.cgi?cmd=draft&amp;fldrname=drafts&amp;select=0&amp;msgid=" +
                urlEncoded(draft) + "\">" + escaped(message(kTextTryFailed)) + "</a></p>\n";
    if (isCopyMissing(folder))
        more += "<p class=\"error\">" + escaped(message(kTextCopyMissing)) + "</p>\n";
    Page page;
    page.text("RESULT", message(failed ? kTextSentToSome : kTextSentToAll));
    page.markup("RESULT_CLASS", failed ? "error" : "notice");
    page.markup("RESULTS", deliveryTable(deliveries));
    page.markup("MORE", more);
    page.respond("write_sent.html", user);
}

}  // namespace host
