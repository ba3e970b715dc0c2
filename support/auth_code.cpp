// Authentication codes. The signature is made over the very bytes that stand in the code, and is
// compared before anything else is looked at, in constant time: no reading of a forged code tells
// how near it came. A code is read whole or not at all.

#include "auth_code.h"

#include <sodium.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "mail/base/bounded_text.h"
#include "mail/base/text.h"
#include "support.h"

using namespace attalven;

namespace {

constexpr size_t kIdMax = 64, kCodeMax = 256;
constexpr int kBase64 = sodium_base64_VARIANT_URLSAFE_NO_PADDING;
// Keeps the codes apart from anything else that a site signs with the same key.
constexpr string_view kPurpose = "attalven-auth-code-1:";

struct Signature {
    unsigned char bytes[crypto_auth_hmacsha256_BYTES];
};

const unsigned char* bytesOf(string_view s) {
    return reinterpret_cast<const unsigned char*>(s.data());
}

Signature sign(string_view payload, string_view key) {
    Signature signature;
    crypto_auth_hmacsha256_state state;
    crypto_auth_hmacsha256_init(&state, bytesOf(key), key.size());
    crypto_auth_hmacsha256_update(&state, bytesOf(kPurpose), kPurpose.size());
    crypto_auth_hmacsha256_update(&state, bytesOf(payload), payload.size());
    crypto_auth_hmacsha256_final(&state, signature.bytes);
    sodium_memzero(&state, sizeof state);
    return signature;
}

/// Decodes all of `s`; the number of bytes, 0 if it is not base64 or longer than `max`.
size_t decode(unsigned char* dst, size_t max, string_view s) {
    size_t n = 0;
    bool whole =
        sodium_base642bin(dst, max, s.data(), s.size(), nullptr, &n, nullptr, kBase64) == 0;
    return whole ? n : 0;
}

bool isSigned(string_view payload, string_view signature, string_view key) {
    Signature given, right = sign(payload, key);
    return decode(given.bytes, sizeof given, signature) == sizeof given &&
           sodium_memcmp(given.bytes, right.bytes, sizeof right) == 0;
}

}  // namespace

char* authCodeMake(const char* id, const char* key, time_t expires) {
    string_view name = viewOf(id), secret = viewOf(key);
    if (name.empty() || name.size() > kIdMax || secret.empty() || expires <= 0) return nullptr;
    char coded[sodium_base64_ENCODED_LEN(kIdMax, kBase64)];
    sodium_bin2base64(coded, sizeof coded, bytesOf(name), name.size(), kBase64);
    Text code;
    code.appendFormat("%s.%" PRIdMAX, coded, static_cast<intmax_t>(expires));
    Signature signature = sign(code.view(), secret);
    sodium_bin2base64(coded, sizeof coded, signature.bytes, sizeof signature, kBase64);
    code.append('.');
    code.append(viewOf(coded));
    return code.take();
}

char* strGetAuthCodeVal(const char* authCode, const char* key) {
    static BoundedText<kIdMax> userId;
    userId.clear();
    string_view code = viewOf(authCode), secret = viewOf(key);
    if (secret.empty() || code.size() > kCodeMax) return nullptr;
    size_t second = code.rfind('.');
    if (second == string_view::npos) return nullptr;
    string_view payload = head(code, second);
    if (!isSigned(payload, tail(code, second + 1), secret)) return nullptr;

    // Signed, hence ours: two fields, in the form in which authCodeMake() writes them.
    size_t first = payload.find('.');
    if (first == string_view::npos) return nullptr;
    if (strtoimax(payload.data() + first + 1, nullptr, 10) <= time(nullptr)) return nullptr;
    unsigned char id[kIdMax];
    size_t n = decode(id, sizeof id, head(payload, first));
    userId.assign({reinterpret_cast<const char*>(id), n});
    return n ? userId.data() : nullptr;
}
