// mailwrite.cgi: the compose form. GET shows it, empty or filled from a message (cmd=new, reply,
// replyall, forward, draft) or the results of a form that was sent (cmd=sent); POST attaches files,
// saves a draft or sends, by the button that was pressed.

#include <cstdio>
#include <string>
#include <utility>

#include "host_texts.h"
#include "kit/page.h"
#include "mailwrite_entries.h"
#include "mailwrite_page.h"
#include "mailwrite_source.h"
#include "support/host.h"

namespace host {

namespace {

void get(const Request& request, const User& user) {
    if (request.value("cmd") == "sent") {
        FormFolder folder(user, request.value("form"));
        return showResults(user, folder);
    }
    Sender sender(user);
    Form form(sender.preference);
    form.id = FormFolder::newId();
    FormFolder folder(user, form.id);
    fillForm(form, request, user, folder);
    showForm(form, sender, user, folder, {});
}

/// Takes the files that came with the form; those that are too many do not stay.
void takeUploads(const Request& request, FormFolder& folder, Notes& notes) {
    std::vector<FormFile> before = folder.files();
    for (const Upload& upload : request.uploads()) {
        bool isImage = upload.field == "image" && isImageName(upload.name);
        folder.take(upload, isImage ? FileKind::kImage : FileKind::kAttached);
    }
    bool areFine = request.uploads().empty() || isWithinLimits(folder.files());
    if (areFine && !request.lacksFiles()) return;
    for (const FormFile& file : folder.files()) {
        bool isOld = false;
        for (const FormFile& old : before) isOld |= old.key == file.key;
        if (!isOld) folder.remove(file.key);
    }
    notes.problems.push_back({"files", message(kTextFilesTooLarge)});
}

/// Does what the pressed button says; true when the form is done with.
bool act(const Request& request, const Form& form, const Sender& sender, const User& user,
         FormFolder& folder, Notes& notes) {
    takeUploads(request, folder, notes);
    std::string action = request.value("action");
    if (action.starts_with("remove:")) folder.remove(action.substr(7));
    if (!notes.problems.empty()) return false;
    if (action == "draft") {
        saveDraft(form, sender, user, folder);
        notes.done = message(kTextDraftSaved);
    }
    if (action != "send") return false;
    notes.problems = send(form, sender, user, folder, notes.deliveries);
    return notes.problems.empty();
}

/// A form whose session or token has ended comes back with its text: nothing is done for it, but
/// nothing that was written is lost.
void post(const Request& request, const User& user) {
    Sender sender(user);
    Form form(sender.preference);
    form.read(request);
    FormFolder folder(user, form.id);
    std::string results = "mailwrite.cgi?cmd=sent&form=" + form.id;
    Notes notes;
    int status = 422;
    try {
        checkToken(request, user);
        if (!sentResults(folder).empty()) return redirect(results);
        if (act(request, form, sender, user, folder, notes)) return redirect(results);
    } catch (const PageError& error) {
        notes.problems.push_back({"", message(error.message)});
        status = error.status;
    } catch (const std::exception& error) {
        fprintf(stderr, "mailwrite: %s\n", error.what());
        notes.problems.push_back({"", message(kTextInternalError)});
        status = 500;
    }
    showForm(form, sender, user, folder, notes, notes.problems.empty() ? 200 : status);
}

void showUnsent(const PageError& error) {
    Request request;
    if (!request.isPost()) throw error;
    Page page;
    page.text("ERROR", message(error.message));
    for (const char* field : {"to", "cc", "bcc", "subject", "body"})
        page.text(field, request.value(field));
    page.respond("write_unsent.html", error.status);
}

void run() {
    User user;
    try {
        user = currentUser();
    } catch (const PageError& error) {
        return showUnsent(error);
    }
    Request request(uploadFolder(user));
    if (request.isPost()) return post(request, user);
    get(request, user);
}

}  // namespace

}  // namespace host

int main() {
    return host::runProgram(host::run);
}
