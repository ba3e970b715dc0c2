#include "settings_form.h"

#include <algorithm>
#include <cstdio>

#include "host_texts.h"
#include "text.h"

namespace host {

namespace {

bool isControl(char c) {
    return (c >= 0 && c < ' ') || c == '\x7F';
}

std::string trimmed(const std::string& text) {
    size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return "";
    return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// The words of a directive's argument; missing ones are empty.
struct Words {
    std::string first, second;
    explicit Words(const char* arg) {
        std::string all = arg ? arg : "";
        size_t blank = std::min(all.find(' '), all.size());
        first = all.substr(0, blank);
        second = trimmed(all.substr(blank));
    }
};

}  // namespace

void SettingsForm::takeLine(const Request& request, const std::string& field, size_t most) {
    std::string line = request.value(field);
    std::replace_if(line.begin(), line.end(), isControl, ' ');
    values_[field] = trimmed(line);
    if (values_[field].size() > most) complain(field, kTextSettingTooLong);
}

void SettingsForm::takeLines(const Request& request, const std::string& field, size_t most) {
    std::string text = request.value(field);
    std::erase_if(text, [](char c) { return isControl(c) && c != '\n' && c != '\t'; });
    text.erase(text.find_last_not_of('\n') + 1);
    values_[field] = text.empty() ? "" : text + "\n";
    if (values_[field].size() > most) complain(field, kTextSettingTooLong);
}

void SettingsForm::takeNumber(const Request& request, const std::string& field, long least,
                              long most) {
    values_[field] = trimmed(shortened(request.value(field), 20));
    if (request.number(field, least, most, least - 1) >= least) return;
    std::string range = std::to_string(least) + " - " + std::to_string(most);
    complain(field, message(kTextNumberRange, range));
}

void SettingsForm::takeBox(const Request& request, const std::string& field) {
    values_[field] = request.value(field) == "1" ? "1" : "0";
}

void SettingsForm::complain(const std::string& field, const std::string& text) {
    complaints_.emplace(field, text);
}

void SettingsForm::complain(const std::string& field, int messageNumber) {
    complain(field, message(messageNumber));
}

std::string SettingsForm::complaintOf(const std::string& field) const {
    auto found = complaints_.find(field);
    if (found == complaints_.end()) return "";
    return "<p class=\"error\" id=\"" + field + "_error\">" + escaped(found->second) + "</p>";
}

void SettingsForm::bind(Page& page, const Request& request) const {
    auto print = [&page](const std::string& markup) {
        fputs(toPage(markup, page.charSet().c_str()).c_str(), stdout);
    };
    auto valueOf = [this](const std::string& field) {
        auto found = values_.find(field);
        return found == values_.end() ? std::string() : found->second;
    };
    page.call("VALUE", [=](const char* arg) { print(escaped(valueOf(Words(arg).first))); });
    auto mark = [=](const char* attribute) {
        return [=](const char* arg) {
            Words words(arg);
            if (valueOf(words.first) == words.second) print(attribute);
        };
    };
    page.call("SELECTED", mark(" selected"));
    page.call("CHECKED", mark(" checked"));
    page.call("COMPLAINT", [=, this](const char* arg) { print(complaintOf(Words(arg).first)); });
    page.call("ARIA", [=, this](const char* arg) {
        Words words(arg);
        bool wrong = complaints_.count(words.first) != 0;
        std::string ids = wrong ? words.first + "_error" : "";
        if (!words.second.empty()) ids += (wrong ? " " : "") + words.second;
        print((wrong ? " aria-invalid=\"true\"" : "") +
              (ids.empty() ? std::string() : " aria-describedby=\"" + ids + "\""));
    });
    std::string notice;
    if (!isGood())
        notice =
            "<p class=\"error\" role=\"alert\">" + escaped(message(kTextSettingsNotSaved)) + "</p>";
    else if (request.has("saved"))
        notice = "<p class=\"notice good\" role=\"status\">" +
                 escaped(message(kTextSettingsSaved)) + "</p>";
    page.markup("NOTICE", notice);
}

}  // namespace host
