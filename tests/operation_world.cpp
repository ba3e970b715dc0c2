#include <filesystem>
#include <utility>

#include "kit/faults.h"
#include "kit/script_server.h"
#include "operation_rows.h"
#include "support/auth_code.h"

using std::string;

namespace {

/// Faults do not strike while the world is prepared.
struct Pause {
    int armed = std::exchange(faults->armed, 0);
    ~Pause() { faults->armed = armed; }
};

}  // namespace

struct World::Inputs {
    const string mailbox = kit::readFile(TEST_DATA "/sample.mbox");
    kit::File sample = kit::fileOf(mailbox), own = kit::fileOf(mailbox), text;
    Fldr* index = nullptr;
    std::vector<MailInfo*> messages;
    std::unique_ptr<kit::ScriptServer> server;
    std::vector<string> texts;
    std::vector<char*> list;
    FILE* file = nullptr;
    MailView view = {};
    void* slot = nullptr;
};

World::World() : inputs_(new Inputs) {
    setenv("HTTP_COOKIE", "lang=eng; tnum=1", 1);
    string table;
    for (int n = 1; n < 120; n++) table += std::to_string(n) + "\ttext " + std::to_string(n) + "\n";
    kit::writeFile(dir + "/root/conf/msg.eng", table);
    kit::writeFile(dir + "/root/conf/mime.types", "image/gif\tgif\ntext/plain\ttxt\n");
    for (const char* page : {"t_login_fail.html", "notice"})
        kit::writeFile(dir + "/doc/template/eng1/" + page, "a [%LANG%] [%NAME%]\n");
    kit::writeFile(dir + "/copy", "From x@y DATE\nSubject: kept\n\n.dot\nFrom here\n");
    admOptions.admSign = strdup("-- \nsign\n");
    writeFiles();
}

World::~World() {
    forget();
    free(std::exchange(admOptions.admSign, nullptr));
}

void World::writeFiles() {
    Pause pause;
    for (const char* tree : {"/mbox", "/spool"}) std::filesystem::remove_all(dir + tree);
    for (const char* name : {"preference.ini", "vacation.ini", "vacation.txt", "auto", "memo"})
        kit::writeFile(dir + "/mbox/k/i/kim/" + name, "PAGE_SIZE = 7\n");
    for (const char* name :
         {"admin_preference.ini", "adm_mail_subject.txt", "adm_mail.txt", "adm_sign.txt"})
        kit::writeFile(dir + "/mbox/" + name, "QUOTA = 7\n");
    kit::writeFile(dir + "/mbox/storage.ini", "[one]\nSPOOL = " + dir + "\nMAILBOX = /tmp\n");
    kit::writeFile(dir + "/spool/k/i/kim", kit::readFile(TEST_DATA "/sample.mbox"));
}

void World::forget() {
    for (MailInfo*& m : inputs_->messages) mailFree(&m);
    inputs_->messages.clear();
    fldrFree(std::exchange(inputs_->index, nullptr));
    inputs_->server.reset();
    free(std::exchange(vacation.replyText, nullptr));
    mailFreeAdminPreference(&policy);
}

FILE* World::sample(long at) {
    fseek(inputs_->sample.get(), at, SEEK_SET);
    return inputs_->sample.get();
}

FILE* World::stream(const char* text) {
    Pause pause;
    inputs_->text = kit::fileOf(text);
    return inputs_->text.get();
}

Fldr* World::folder() {
    Pause pause;
    if (!inputs_->index) inputs_->index = fldrProcessing(inputs_->own.get());
    return inputs_->index;
}

MailInfo* World::message(int n) {
    Pause pause;
    const FldrMsg& e = *folder()->msgs[n - 1];
    inputs_->messages.push_back(mailProcessing(e.offset, e.size, "", inputs_->own.get()));
    return inputs_->messages.back();
}

Fldr* World::marked() {
    Pause pause;
    Fldr* f = fldrOpen((dir + "/spool/k/i/kim").c_str());
    fldrMsgDelete(2, f);
    fldrMsgSetRead(3, f);
    return f;
}

char** World::attachments() {
    Pause pause;
    inputs_->texts = {dir + "/doc/template/eng1/notice", "forward@" + dir + "/copy",
                      "cid_notice.gif@1"};
    inputs_->list.clear();
    for (string& text : inputs_->texts) inputs_->list.push_back(text.data());
    inputs_->list.push_back(nullptr);
    return inputs_->list.data();
}

char** World::uploads() {
    Pause pause;
    kit::writeFile(dir + "/upload", "x");
    inputs_->texts = {dir + "/upload", "forward@" + dir + "/none"};
    inputs_->list = {inputs_->texts[0].data(), inputs_->texts[1].data(), nullptr};
    return inputs_->list.data();
}

void** World::view(int n) {
    inputs_->file = sample();
    inputs_->view = {0, message(n)->body, &inputs_->file, 0, nullptr, "folder"};
    inputs_->slot = &inputs_->view;
    return &inputs_->slot;
}

const char* World::code() {
    Pause pause;
    inputs_->texts = {kit::taken(authCodeMake("kim", conf.adminKey, time(nullptr) + 1000))};
    return inputs_->texts[0].c_str();
}

char* World::server(bool isGateway) {
    Pause pause;
    inputs_->server.reset(
        isGateway ? new kit::ScriptServer({"100\n100\n", "200\n", "200\n", "200\n", "-"})
                  : new kit::ScriptServer({"220\n", "250\n", "250\n", "250\n", "354\n"}));
    snprintf(conf.serverName, sizeof conf.serverName, "%s", inputs_->server->address().c_str());
    return conf.serverName;
}

unsigned short World::gateway() {
    server(true);
    return static_cast<unsigned short>(inputs_->server->port());
}
