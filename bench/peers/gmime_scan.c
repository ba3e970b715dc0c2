// gmime_scan FILE [mmap]: index an mbox with GMime: From, decoded Subject, Date, Message-ID,
// Status, offsets of every message.
#include <gmime/gmime.h>
#include <stdio.h>
#include <string.h>

int main(int c, char** v) {
    g_mime_init();
    GError* err = NULL;
    GMimeStream* s = NULL;
    if (c > 2) {
        GMimeStream* f = g_mime_stream_fs_open(v[1], 0, 0, &err);
        s = g_mime_stream_mmap_new(((GMimeStreamFs*)f)->fd, 1, 2);  // PROT_READ, MAP_PRIVATE
    } else
        s = g_mime_stream_fs_open(v[1], 0, 0, &err);
    GMimeParser* p = g_mime_parser_new_with_stream(s);
    g_mime_parser_set_format(p, GMIME_FORMAT_MBOX);
    g_mime_parser_set_persist_stream(p, TRUE);
    size_t n = 0, flags = 0, subj = 0, addr = 0, ids = 0;
    long long dates = 0, offs = 0, hdr = 0;
    while (!g_mime_parser_eos(p)) {
        GMimeMessage* m = g_mime_parser_construct_message(p, NULL);
        if (!m) break;
        offs += g_mime_parser_get_mbox_marker_offset(p);
        hdr += g_mime_parser_get_headers_end(p) - g_mime_parser_get_headers_begin(p);
        const char* q = g_mime_message_get_subject(m);
        if (q) subj += strlen(q);
        InternetAddressList* l = g_mime_message_get_from(m);
        if (l && internet_address_list_length(l)) {
            InternetAddress* a = internet_address_list_get_address(l, 0);
            if ((q = internet_address_get_name(a))) addr += strlen(q);
            if (INTERNET_ADDRESS_IS_MAILBOX(a) &&
                (q = internet_address_mailbox_get_addr((InternetAddressMailbox*)a)))
                addr += strlen(q);
        }
        GDateTime* d = g_mime_message_get_date(m);
        if (d) dates += g_date_time_to_unix(d);
        if ((q = g_mime_message_get_message_id(m))) ids += strlen(q);
        if ((q = g_mime_object_get_header((GMimeObject*)m, "Status"))) flags += !!strchr(q, 'R');
        n++;
        g_object_unref(m);
    }
    printf(
        "%zu messages, read %zu, subject bytes %zu, from bytes %zu, id bytes %zu, dates %lld, "
        "offsets %lld, header bytes %lld\n",
        n, flags, subj, addr, ids, dates, offs, hdr);
    return 0;
}
