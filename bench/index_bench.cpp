// Indexes an mbox file, with every value that a message list shows, and prints sums to compare with
// other programs. Usage: index_bench FILE

#include <cstdio>
#include <cstring>

#include "mail/mail.h"

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    FILE* stream = argc == 2 ? fopen(argv[1], "r") : nullptr;
    Fldr* folder = fldrProcessing(stream);
    if (!folder) {
        fprintf(stderr, "usage: index_bench FILE\n");
        return 2;
    }
    long long offsets = 0, headers = 0, dates = 0;
    size_t ids = 0, senders = 0, subjects = 0;
    for (int n = 1; n <= fldrMsgMax(folder); n++) {
        const FldrMsg* entry = folder->msgs[n - 1];
        offsets += entry->offset;
        headers += entry->hdrSize;
        dates += entry->date;
        ids += strlen(entry->msgId);
        senders += strlen(entry->from);
        subjects += strlen(entry->subject);
    }
    printf(
        "%d messages, offsets %lld, header bytes %lld, dates %lld, id bytes %zu, from bytes %zu, "
        "subject bytes %zu\n",
        fldrMsgMax(folder), offsets, headers, dates, ids, senders, subjects);
    return 0;
}
