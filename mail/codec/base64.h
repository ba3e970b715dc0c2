#ifndef ATTALVEN_MAIL_CODEC_BASE64_H
#define ATTALVEN_MAIL_CODEC_BASE64_H

// The base64 kernel (RFC 2045 section 6.8): steps with explicit state over pieces of text of any
// size. Steps read and write nothing but the bytes named here, so they work on exact-size areas;
// decoding works in place.

#include <cstdint>

#include "mail/base/ascii.h"
#include "mail/base/vector.h"

namespace attalven {

/// The alphabet; index 64 is the pad.
inline constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";

/// Where an encoder stands between two steps.
struct Base64Encoder {
    size_t lineLength;  // characters between line feeds, a multiple of 4; 0 for no line feeds
    size_t column = 0;  // characters on the current line
    bool vector = hasVector();
};

/// Characters, without line feeds, for so many bytes.
constexpr uint64_t base64Length(uint64_t bytes) {
    return (bytes + 2) / 3 * 4;
}

/// Bytes that a step writes at most.
constexpr size_t base64Room(const Base64Encoder& e, size_t bytes) {
    size_t length = base64Length(bytes);
    return length + (e.lineLength ? length / e.lineLength + 1 : 0);
}

/// Encodes `bytes`: whole groups of three, unless they end the text. Gives the bytes written to
/// `out`, line feeds included.
size_t base64Encode(Base64Encoder& e, string_view bytes, char* out);

/// Where a decoder stands: the group of four places that is being filled.
struct Base64Decoder {
    bool byLine = false;  // a line feed drops an incomplete group; otherwise it is skipped
    unsigned places = 0;  // characters of the group, pads included
    unsigned data = 0;    // of these, characters of the alphabet
    uint32_t bits = 0;
    bool vector = hasVector();
};

/// Each group writes three bytes, but a pad counts for none: `counted` is the length of the decoded
/// text, `written` the bytes put into the buffer. They differ behind a pad.
struct Base64Decoded {
    size_t written = 0, counted = 0;
};

/// Decodes `text` into `out`, which has room for base64DecodedRoom(). By line, both results are
/// equal: what pads wrote without counting is taken back at each line feed and at the end.
Base64Decoded base64Decode(Base64Decoder& d, string_view text, char* out);

constexpr size_t base64DecodedRoom(size_t characters) {
    return (characters + 3) / 4 * 3;
}

}  // namespace attalven

#endif
