#ifndef ATTALVEN_MAIL_CODEC_H
#define ATTALVEN_MAIL_CODEC_H

#include <stdio.h>

#include "export.h"

/* Transfer encodings, character sets and encoded words. All texts are NUL-terminated byte strings.
 */

ATTALVEN_BEGIN

/* ---- Transfer codecs: base64, quoted-printable, uuencode ---------------------------------------
 *
 * Buffer forms read a NUL-terminated text and write to a buffer of the caller, terminated with a
 * NUL. A NULL text reads as the empty one; a NULL buffer or stream makes the call do nothing and
 * give 0. Room for a text of n bytes: decoders n + 1 bytes; base64 encoders 4 bytes for each 3
 * begun, one more for each whole line, and 1; EncodeQP 4 * n + 16.
 *
 * Stream forms copy from a stream's current position to another stream in constant memory. They
 * take lines in pieces of at most 5,119 bytes; `length` is the part's length in bytes: a line that
 * begins inside the part is taken to its end, 0 or less takes nothing. Decoding state never crosses
 * the end of a physical line. They stop at the end of the input, or when the output takes no more.
 */

/*
 * Encodes bytes as base64 (RFC 2045 section 6.8), a line feed after every `lineLen` characters,
 * none after a shorter last line. `mode` tells what the arguments are: 1 text to character buffer,
 * 2 text to stream (FILE *), 3 stream to stream, read to its end. A `lineLen` of 0 breaks no line.
 * Gives the number of characters written without the line feeds; 0 when an argument is
 * NULL or the mode is another one. Mode 1 empties the buffer first.
 */
ATTALVEN_API int funcEncodeBase64(void* dst, const void* src, int lineLen, int mode);

/*
 * The same with lines of 76 characters: text to buffer, stream to stream (from the input's position
 * to its end), text to stream. A NULL or empty text gives 0 and leaves the buffer untouched.
 */
ATTALVEN_API int EncodeBase64(char* dst, const char* text);
ATTALVEN_API int strmEncodeBase64(FILE* out, FILE* in);
ATTALVEN_API int strmDestEncodeBase64(FILE* out, const char* text);

/*
 * Encodes a text as base64 in lines of 56 characters. Caller frees with free(). NULL for a NULL or
 * empty text, and when memory is out.
 */
ATTALVEN_API char* mailEncodeBase64(const char* text);

/*
 * Decodes base64 (RFC 2045 section 6.8). Bytes outside the alphabet are skipped, "=" fills a place
 * of a group of four, an incomplete last group is dropped. Gives the number of decoded bytes, which
 * may be NULs; never negative.
 */
ATTALVEN_API int DecodeBase64(char* dst, const char* text);

/*
 * The same into a new text: a NUL byte ends its group of three bytes. Caller frees with free().
 * NULL for a NULL or empty text, and when memory is out.
 */
ATTALVEN_API char* mailDecodeBase64(const char* text);

/* Decodes the base64 lines of a part. A group ends with its line at the latest. */
ATTALVEN_API void strmDecodeBase64(FILE* out, FILE* in, int length);

/*
 * Encodes as quoted-printable (RFC 2045 section 6.7): bytes 33 to 60 and 72 to 126 stand as they
 * are, CR is dropped, LF is a line end, a blank before a line end is followed by a soft break.
 * Lines are folded at 58 characters, or at 76 before a byte of 33 to 60. The position in the line
 * is a counter of the process (x_pos), shared by these three and never reset, so that a text may
 * come in pieces. Each gives the encoded length, strmEncodeQP nothing.
 */
ATTALVEN_API int EncodeQP(char* dst, const char* text);
ATTALVEN_API int strmDestEncodeQP(FILE* out, const char* text);
ATTALVEN_API void strmEncodeQP(FILE* out, FILE* in, int length);

/*
 * The same into a new text, folded at 56 characters whatever byte follows, with a counter (x_pos)
 * of its own. Caller frees with free(). NULL for a NULL or empty text, and when memory is out.
 */
ATTALVEN_API char* mailEncodeQP(const char* text);

/*
 * Decodes one line of quoted-printable text (RFC 2045 section 6.7): "=" before CR or LF ends it;
 * "=" and two characters give one byte, whether they are hexadecimal digits or not; "=" with fewer
 * than two characters behind it is copied with them. Gives the number of decoded bytes, which may
 * be NULs.
 */
ATTALVEN_API int DecodeQP(char* dst, const char* text);

/*
 * Older variant: "=" and CR or LF are skipped as a pair, an escape that gives 0 writes its "=" and
 * is read on as text, upper-case digits only, "_" gives a blank. An invalid first digit counts as
 * 15, an invalid second one sets all bits.
 */
ATTALVEN_API int DecodeQP_ORG(char* dst, const char* text);

/*
 * Decodes a quoted-printable text into a new one: "=" with the CR or LF behind it is skipped, and
 * decoded NUL bytes are lost. Caller frees with free(). NULL for a NULL or empty text, and when
 * memory is out.
 */
ATTALVEN_API char* mailDecodeQP(const char* text);

/* Decodes the quoted-printable lines of a part. */
ATTALVEN_API void strmDecodeQP(FILE* out, FILE* in, int length);

/*
 * Decodes one uuencoded line: its first character announces the number of bytes, 0 to 63, which is
 * the result; 0 writes nothing, not even a NUL. Characters behind the end of the line count as
 * blanks; never more bytes are written than the line has characters, and a NUL.
 */
ATTALVEN_API int DecodeUU(char* dst, const char* line);

/*
 * Decodes the uuencoded lines of a part, each to its announced length (missing bytes are NULs).
 * "begin" lines are skipped and do not count in `length`; "end" stops.
 */
ATTALVEN_API void strmDecodeUU(FILE* out, FILE* in, int length);

/*
 * Writes unchanged: the next `length` bytes of a stream, or a text. strmDestXBit gives the length
 * of the text, 0 when an argument is NULL.
 */
ATTALVEN_API void strmXBit(FILE* out, FILE* in, int length);
ATTALVEN_API int strmDestXBit(FILE* out, const char* text);

/* ---- ISO-2022 and Japanese codes ---------------------------------------------------------------
 *
 * Converters write at most as many bytes as the text has and a NUL, and give the number of bytes.
 */

/*
 * Whether the designator of ISO-2022-KR (RFC 1557), ESC $ ) C, stands in the text's first line: 1
 * or 0. A text that begins with LF gives 0.
 */
ATTALVEN_API int SearchISO2022KRDesignator(const char* text);

/*
 * The first designator of ISO-2022-JP (RFC 1468) anywhere in the text: 1 for ESC ( J, 2 for ESC $
 * @, 3 for ESC $ B; 0 for ESC ( B or none.
 */
ATTALVEN_API int SearchISO2022JPDesignator(const char* text);

/* ISO-2022-KR (RFC 1557) to EUC-KR. */
ATTALVEN_API int DecodeISO2022KR(char* dst, const char* text);

/*
 * ISO-2022-JP (RFC 1468) to Shift-JIS. Only ESC $ B and ESC ( B switch, other designators are
 * copied; a lone byte at the end of kanji is copied.
 */
ATTALVEN_API int DecodeISO2022JP(char* dst, const char* text);

/* Replaces the two bytes of a JIS X 0208 character, 0x21 to 0x7E each, by those of Shift-JIS. */
ATTALVEN_API void jis2sjis(int* c1, int* c2);

/* EUC-JP to Shift-JIS; half-width katakana lose their shift byte, other bytes are copied. */
ATTALVEN_API int DecodeEucJP2ShiftJIS(char* dst, const char* text);

/*
 * Copies the lines of a part of `length` bytes as the stream forms above; from the first line with
 * the designator of ISO-2022-KR on they are converted to EUC-KR, each for itself.
 */
ATTALVEN_API void strmDecodeISO2022KR(FILE* out, FILE* in, int length);

/* ---- Character sets ----------------------------------------------------------------------------
 *
 * Names are matched ignoring case. A name of the converter is 1 to 64 letters, digits and "._:+-";
 * any other name converts nothing.
 */

/* Converts `text` from the set `source` to the set `target` as a whole: one invalid byte, or a
 * character that the target lacks, makes it fail. An incomplete character at the end is dropped. A
 * stateful target (ISO-2022, HZ) ends in its initial state (RFC 1468, RFC 1557, RFC 1843).
 * Result: a new text. Caller frees with free(). NULL when `text` is NULL or empty, when a name is
 * NULL or unknown, when the conversion fails and when memory is out. */
ATTALVEN_API char* strConvCharSet(const char* target, const char* source, const char* text);

/* The page character set of the family to which `name` belongs (EUC-KR, SHIFT-JIS, GB2312, BIG5,
 * HZ), or `name` itself, cut to 30 characters, when it belongs to none; "" for NULL. Static: valid
 * until the next call. */
ATTALVEN_API char* getDefaultCharSet(const char* name);

/* Mail text to page text and back. mailDecodeCharSet converts `text` from a message's set to its
 * page character set; from "utf-..." to the first of EUC-KR, SHIFT-JIS, GB2312, BIG5 that can hold
 * it. A text in "iso-2022-kr" or "iso-2022-jp" that the converter refuses is decoded by the
 * library's own tolerant decoder. mailEncodeCharSet converts page text to the set chosen for
 * sending: a family name, or "jpn-utf-", "kor-utf-", "cnt-utf-", "cns-utf-" and the rest of the UTF
 * name, where the prefix names the page character set (SHIFT-JIS, EUC-KR, GB2312, BIG5). Result: a
 * new text. Caller frees with free(). NULL when `text` is NULL or empty (mailDecodeCharSet gives
 * "" for an empty text in one of those two sets), the set is NULL or unknown, or the text does not
 * convert. */
ATTALVEN_API char* mailDecodeCharSet(const char* text, const char* charset);
ATTALVEN_API char* mailEncodeCharSet(const char* text, const char* charset);

/* The first of EUC-KR, EUC-JP, GB2312, BIG5 in which `text` is valid, NULL when it is valid in
 * none, empty or NULL. Static: valid until the next call. */
ATTALVEN_API char* mailGetSrcCharSet(const char* text);

/* The character set in which mail of a language is sent: "kor" gives "euc-kr", "jpn" "iso-2022-jp",
 * "chn" "gb2312", "eng" and every other code, NULL included, "iso-8859-1". Case counts.
 * Static: valid until the next call. */
ATTALVEN_API char* mailGetLangCharSet(const char* lang);

/* ---- Encoded words (RFC 2047) ---------------------------------------------------------------- */

/* Decodes the encoded words of a header value, joins them with the plain text around them (white
 * space between two words is kept) and converts the whole to the page character set of the last
 * word; a value without words that carries raw ISO-2022-KR or ISO-2022-JP text is converted from
 * that. What cannot be converted stays as the decoded bytes; an unfinished word keeps the part
 * being read. Result: a new text. Caller frees with free(). NULL when `text` is NULL or empty, or
 * memory is out. */
ATTALVEN_API char* mailDecodeSubject(const char* text);

/* Prepares page text for a header: converts it to the set chosen for sending (mailEncodeCharSet)
 * and writes it as "Q" (code 2) or "B" (code 3) encoded words, or without words (any other code).
 * The words fold over lines that begin with a TAB. Text that does not convert is written as it is,
 * labelled with its page character set; with an empty or NULL `charset` the result is a copy of
 * `text`. Result: a new text. Caller frees with free(). NULL when `text` is NULL (with codes 2
 * and 3 also when it is empty or half a character) or memory is out. Code 2 counts on the `x_pos`
 * of mailEncodeSubjectQP. */
ATTALVEN_API char* mailEncodeSubject(const char* text, const char* charset, int code);

/* Write a text that is already in the set `charset` as encoded words: Q words, folded when more
 * than 55 characters stand on the line (counted by `x_pos`, which lives on between calls), or B
 * words of at most 42 bytes of text. The label is the set's name in lower case, without the
 * language prefix of a name such as "kor-utf-8", cut to 100 characters; bytes that no header label
 * may hold are dropped. Result: a new text. Caller frees with free(). NULL when `text` is NULL or
 * empty, or memory is out. */
ATTALVEN_API char* mailEncodeSubjectQP(const char* text, const char* charset);
ATTALVEN_API char* mailEncodeSubjectBase64(const char* text, const char* charset);

ATTALVEN_END

#endif
