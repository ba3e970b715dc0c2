// etpan_scan FILE: index an mbox with libetpan's mailmbox (mmap) and parse the envelope fields of
// every message.
#include <libetpan/libetpan.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static char* decode(const char* s) {
    size_t cur = 0;
    char* out = NULL;
    return s && mailmime_encoded_phrase_parse("us-ascii", s, strlen(s), &cur, "utf-8", &out) ==
                       MAILIMF_NO_ERROR
               ? out
               : NULL;
}

int main(int c, char** v) {
    struct mailmbox_folder* f;
    if (mailmbox_init(v[1], 1, 1, 0, &f) != MAILMBOX_NO_ERROR) return 1;
    size_t flags = 0, subj = 0, addr = 0, ids = 0;
    long long dates = 0, offs = 0, hdr = 0;
    for (unsigned i = 0; i < carray_count(f->mb_tab); i++) {
        struct mailmbox_msg_info* m = carray_get(f->mb_tab, i);
        offs += m->msg_start;
        hdr += m->msg_start_len + m->msg_headers_len;
        size_t cur = 0;
        struct mailimf_fields* fields;
        struct mailimf_single_fields sf;
        if (mailimf_envelope_and_optional_fields_parse(f->mb_mapping + m->msg_headers,
                                                       m->msg_headers_len, &cur,
                                                       &fields) != MAILIMF_NO_ERROR)
            continue;
        mailimf_single_fields_init(&sf, fields);
        char* q;
        if (sf.fld_subject && (q = decode(sf.fld_subject->sbj_value))) {
            subj += strlen(q);
            free(q);
        }
        if (sf.fld_from && clist_begin(sf.fld_from->frm_mb_list->mb_list)) {
            struct mailimf_mailbox* mb =
                clist_content(clist_begin(sf.fld_from->frm_mb_list->mb_list));
            if (mb->mb_display_name && (q = decode(mb->mb_display_name))) {
                addr += strlen(q);
                free(q);
            }
            addr += strlen(mb->mb_addr_spec);
        }
        if (sf.fld_orig_date) {
            struct mailimf_date_time* d = sf.fld_orig_date->dt_date_time;
            struct tm tm = {.tm_sec = d->dt_sec,
                            .tm_min = d->dt_min,
                            .tm_hour = d->dt_hour,
                            .tm_mday = d->dt_day,
                            .tm_mon = d->dt_month - 1,
                            .tm_year = d->dt_year - 1900};
            dates += timegm(&tm) - (d->dt_zone / 100 * 60 + d->dt_zone % 100) * 60;
        }
        if (sf.fld_message_id) ids += strlen(sf.fld_message_id->mid_value);
        for (clistiter* it = clist_begin(fields->fld_list); it; it = clist_next(it)) {
            struct mailimf_field* x = clist_content(it);
            if (x->fld_type == MAILIMF_FIELD_OPTIONAL_FIELD &&
                !strcasecmp(x->fld_data.fld_optional_field->fld_name, "Status"))
                flags += !!strchr(x->fld_data.fld_optional_field->fld_value, 'R');
        }
        mailimf_fields_free(fields);
    }
    printf(
        "%u messages, read %zu, subject bytes %zu, from bytes %zu, id bytes %zu, dates %lld, "
        "offsets %lld, header bytes %lld\n",
        carray_count(f->mb_tab), flags, subj, addr, ids, dates, offs, hdr);
    return 0;
}
