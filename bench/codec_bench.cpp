// codec_bench OP IN OUT: one whole-file run of a stream codec; OP is b64enc, b64dec, qpenc or
// qpdec.

#include <climits>
#include <cstdio>
#include <cstring>

#include "mail/mail.h"
#include "support/host.h"

MailConf conf;
MailAdminPreference admOptions;

int main(int argc, char** argv) {
    struct {
        const char* op;
        void (*run)(FILE* out, FILE* in);
    } const ops[] = {
        {"b64enc", [](FILE* out, FILE* in) { strmEncodeBase64(out, in); }},
        {"b64dec", [](FILE* out, FILE* in) { strmDecodeBase64(out, in, INT_MAX); }},
        {"qpenc", [](FILE* out, FILE* in) { strmEncodeQP(out, in, INT_MAX); }},
        {"qpdec", [](FILE* out, FILE* in) { strmDecodeQP(out, in, INT_MAX); }},
    };
    for (const auto& op : ops) {
        if (argc != 4 || strcmp(op.op, argv[1]) != 0) continue;
        FILE *in = fopen(argv[2], "rb"), *out = fopen(argv[3], "wb");
        if (!in || !out) return 2;
        op.run(out, in);
        return fclose(out) == 0 ? 0 : 1;
    }
    fprintf(stderr, "codec_bench b64enc|b64dec|qpenc|qpdec IN OUT\n");
    return 2;
}
