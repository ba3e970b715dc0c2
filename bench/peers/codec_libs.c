// codec_libs LIB OP IN OUT: a whole-file codec of another library, streamed in blocks of 64 KB.
// LIB: glib (base64), gmime (base64, quoted-printable), evp (base64 of OpenSSL), etpan (decodes
// both, in one piece). OP: b64enc, b64dec, qpenc, qpdec.
#include <fcntl.h>
#include <glib.h>
#include <gmime/gmime.h>
#include <libetpan/libetpan.h>
#include <openssl/evp.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

enum { B = 65536 };
static unsigned char in[B], out[4 * B + 64];

int main(int c, char** v) {
    const char *lib = v[1], *op = v[2];
    int fi = open(v[3], O_RDONLY), fo = open(v[4], O_WRONLY | O_CREAT | O_TRUNC, 0600),
        enc = !!strstr(op, "enc"), n = 0;
    ssize_t r;
    if (!strcmp(lib, "glib")) {
        gint st = 0, save = 0;
        guint us = 0;
        while ((r = read(fi, in, B)) > 0) {
            gsize k = enc ? g_base64_encode_step(in, r, TRUE, (char*)out, &st, &save)
                          : g_base64_decode_step((char*)in, r, out, &st, &us);
            if (write(fo, out, k) < 0) return 1;
        }
        if (enc && write(fo, out, g_base64_encode_close(TRUE, (char*)out, &st, &save)) < 0)
            return 1;
    } else if (!strcmp(lib, "gmime")) {
        GMimeEncoding e;
        GMimeContentEncoding k =
            op[0] == 'b' ? GMIME_CONTENT_ENCODING_BASE64 : GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE;
        if (enc)
            g_mime_encoding_init_encode(&e, k);
        else
            g_mime_encoding_init_decode(&e, k);
        while ((r = read(fi, in, B)) > 0)
            if (write(fo, out, g_mime_encoding_step(&e, (char*)in, r, (char*)out)) < 0) return 1;
        if (write(fo, out, g_mime_encoding_flush(&e, (char*)in, 0, (char*)out)) < 0) return 1;
    } else if (!strcmp(lib, "evp")) {
        EVP_ENCODE_CTX* x = EVP_ENCODE_CTX_new();
        if (enc)
            EVP_EncodeInit(x);
        else
            EVP_DecodeInit(x);
        while ((r = read(fi, in, B)) > 0) {
            if (enc)
                EVP_EncodeUpdate(x, out, &n, in, r);
            else
                EVP_DecodeUpdate(x, out, &n, in, r);
            if (write(fo, out, n) < 0) return 1;
        }
        if (enc)
            EVP_EncodeFinal(x, out, &n);
        else
            EVP_DecodeFinal(x, out, &n);
        if (write(fo, out, n) < 0) return 1;
    } else {
        struct stat s;
        fstat(fi, &s);
        const char* p = mmap(0, s.st_size, PROT_READ, MAP_PRIVATE, fi, 0);
        char* q;
        size_t pos = 0, len;
        if (mailmime_part_parse(
                p, s.st_size, &pos,
                op[0] == 'b' ? MAILMIME_MECHANISM_BASE64 : MAILMIME_MECHANISM_QUOTED_PRINTABLE, &q,
                &len))
            return 2;
        if (write(fo, q, len) < 0) return 1;
    }
    return 0;
}
