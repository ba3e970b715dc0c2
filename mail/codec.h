#ifndef ATTALVEN_MAIL_CODEC_H
#define ATTALVEN_MAIL_CODEC_H

#include <stdio.h>

#include "export.h"

/* Transfer encodings, character sets and encoded words. All texts are NUL-terminated byte strings.
 */

ATTALVEN_BEGIN

/* Character sets. Names are matched ignoring case. A name of the converter is 1 to 64 letters,
 * digits and "._:+-"; any other name converts nothing. */

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
 * new text. Caller frees with free(). NULL when `text` is NULL or empty, the set is NULL or
 * unknown, or the text does not convert. Overwrites the result of getDefaultCharSet. */
ATTALVEN_API char* mailDecodeCharSet(const char* text, const char* charset);
ATTALVEN_API char* mailEncodeCharSet(const char* text, const char* charset);

/* The first of EUC-KR, EUC-JP, GB2312, BIG5 in which `text` is valid, NULL when it is valid in
 * none, empty or NULL. Static: valid until the next call. */
ATTALVEN_API char* mailGetSrcCharSet(const char* text);

/* The character set in which mail of a language is sent: "kor" gives "euc-kr", "jpn" "iso-2022-jp",
 * "chn" "gb2312", "eng" and every other code, NULL included, "iso-8859-1". Case counts.
 * Static: valid until the next call. */
ATTALVEN_API char* mailGetLangCharSet(const char* lang);

/* Encoded words (RFC 2047). */

/* Decodes the encoded words of a header value, joins them with the plain text around them (white
 * space between two words is kept) and converts the whole to the page character set of the last
 * word; a value without words that carries raw ISO-2022-KR or ISO-2022-JP text is converted from
 * that. What cannot be converted stays as the decoded bytes; an unfinished word keeps the part
 * being read. Result: a new text. Caller frees with free(). NULL when `text` is NULL or empty, or
 * memory is out. Overwrites the result of getDefaultCharSet. */
ATTALVEN_API char* mailDecodeSubject(const char* text);

/* Prepares page text for a header: converts it to the set chosen for sending (mailEncodeCharSet)
 * and writes it as "Q" (code 2) or "B" (code 3) encoded words, or without words (any other code).
 * The words fold over lines that begin with a TAB. Text that does not convert is written as it is,
 * labelled with its page character set; with an empty or NULL `charset` the result is a copy of
 * `text`. Result: a new text. Caller frees with free(). NULL when `text` is NULL (an empty text
 * gives NULL with codes 2 and 3) or memory is out. Overwrites the result of getDefaultCharSet; code
 * 2 counts on the `x_pos` of mailEncodeSubjectQP. */
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
