// gmime_mime parse FILE OUT: parses one message, behind its From_ line, and decodes its second part
// to OUT.
// gmime_mime compose FILE OUT: composes a text with FILE attached in base64 to OUT.
#include <gmime/gmime.h>
#include <stdio.h>
#include <string.h>

int main(int c, char** v) {
    g_mime_init();
    GError* err = NULL;
    GMimeStream *in = g_mime_stream_fs_open(v[2], 0, 0, &err),
                *out = g_mime_stream_fs_open(v[3], 01 | 0100 | 01000, 0600, &err);
    if (!strcmp(v[1], "parse")) {
        GMimeParser* p = g_mime_parser_new_with_stream(in);
        g_mime_parser_set_format(p, GMIME_FORMAT_MBOX);
        g_mime_parser_set_persist_stream(p, TRUE);
        GMimeMessage* m = g_mime_parser_construct_message(p, NULL);
        GMimeObject* o = g_mime_message_get_mime_part(m);
        GMimePart* a = (GMimePart*)g_mime_multipart_get_part((GMimeMultipart*)o, 1);
        long n = g_mime_data_wrapper_write_to_stream(g_mime_part_get_content(a), out);
        g_mime_stream_flush(out);
        printf("%s, %ld bytes\n", g_mime_part_get_filename(a), n);
    } else {
        GMimeMessage* m = g_mime_message_new(TRUE);
        g_mime_message_add_mailbox(m, GMIME_ADDRESS_TYPE_FROM, "Me", "me@example.com");
        g_mime_message_add_mailbox(m, GMIME_ADDRESS_TYPE_TO, "You", "you@example.com");
        g_mime_message_set_subject(m, "\xec\x95\x88\xeb\x85\x95 file", "euc-kr");
        GMimeMultipart* mp = g_mime_multipart_new_with_subtype("mixed");
        GMimeTextPart* t = g_mime_text_part_new();
        g_mime_text_part_set_text(t, "hello\n");
        g_mime_multipart_add(mp, (GMimeObject*)t);
        GMimePart* a = g_mime_part_new_with_type("application", "octet-stream");
        g_mime_part_set_content_encoding(a, GMIME_CONTENT_ENCODING_BASE64);
        g_mime_part_set_filename(a, "a.bin");
        g_mime_part_set_content(
            a, g_mime_data_wrapper_new_with_stream(in, GMIME_CONTENT_ENCODING_DEFAULT));
        g_mime_multipart_add(mp, (GMimeObject*)a);
        g_mime_message_set_mime_part(m, (GMimeObject*)mp);
        printf("%ld bytes\n", (long)g_mime_object_write_to_stream((GMimeObject*)m, NULL, out));
        g_mime_stream_flush(out);
    }
    return 0;
}
