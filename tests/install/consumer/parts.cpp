// parts FOLDER: the number of leaf parts of each message, one a line.
#include <mail/mail.h>
#include <support/support.h>

#include <iostream>
#include <memory>

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    std::unique_ptr<Fldr, decltype(&fldrClose)> folder(argc == 2 ? fldrOpen(argv[1]) : nullptr,
                                                       fldrClose);
    if (!folder) return 1;
    for (int n = 1; n <= fldrMsgMax(folder.get()); n++) {
        const FldrMsg& entry = *folder->msgs[n - 1];
        MailInfo* mail = mailProcessing(entry.offset, entry.size, entry.msgId, folder->fp);
        if (!mail) return 1;
        MailBodyList** parts = mailGetBody(mail->body);
        int leaves = 0;
        while (parts && parts[leaves]) leaves++;
        std::cout << leaves << '\n';
        mailFreeBodyIdx(parts);
        mailFree(&mail);
    }
    return strCaseCmp("parts", "PARTS");
}
