// etpan_delete FILE N: deletes message N with libetpan's mailmbox and expunges the folder.
#include <libetpan/libetpan.h>
#include <stdio.h>
#include <stdlib.h>

int main(int c, char** v) {
    struct mailmbox_folder* f;
    if (mailmbox_init(v[1], 0, 1, 0, &f) != MAILMBOX_NO_ERROR) return 1;
    struct mailmbox_msg_info* m = carray_get(f->mb_tab, atoi(v[2]) - 1);
    int n = carray_count(f->mb_tab), a = mailmbox_delete_msg(f, m->msg_uid),
        b = mailmbox_expunge(f);
    mailmbox_done(f);
    printf("%d messages, delete %d, expunge %d\n", n, a, b);
    return a || b;
}
