#ifndef ATTALVEN_SUPPORT_SUPPORT_H
#define ATTALVEN_SUPPORT_SUPPORT_H

/*
 * The operations that a calling program links in beside libattalven.so. libattalven_support.so is
 * one implementation; any other library with these declarations and contracts can take its place.
 *
 * 1. A text is a NUL-terminated byte sequence in its owner's character set. Case, digits and white
 *    space (blank, TAB, LF, VT, FF, CR) mean the ASCII ones, whatever the locale.
 * 2. NULL arguments are safe: an in-place operation gives NULL back, comparisons and searches read
 *    NULL as the empty text, everything else gives its failure result.
 * 3. In-place operations never lengthen a text and return their argument.
 * 4. Ownership is one of: "Caller frees with free()" (such a text is NULL when memory is out),
 *    "Borrowed: belongs to ...", "Static: valid until ...".
 * 5. One thread, no set-up call.
 */

#include <stddef.h>
#include <stdio.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* ---- text ---------------------------------------------------------------------------------- */
/* `text`, or "" for NULL. Borrowed: belongs to the owner of `text`. */
const char* strSafeAssign(const char* text);

/* Compare ignoring case, whole texts or at most `n` bytes: below 0, 0 (equal) or above 0 as the
 * first differing bytes, read as unsigned and lower-cased, compare. `n` of 0 or less gives 0. */
int strCaseCmp(const char* a, const char* b);
int strNCaseCmp(const char* a, const char* b, int n);

/* First place where `token` stands in `text` ignoring case; NULL when it does not, `text` itself
 * for an empty token. Borrowed: belongs to the owner of `text`. */
char* strCaseStr(const char* text, const char* token);

/* The text after the first byte `c`, white space at its start skipped; NULL when `c` is absent.
 * Borrowed: belongs to the owner of `text`. */
char* strChrNextStr(const char* text, int c);

/* Takes the first word, which ends at the first byte `c` or at the end, out of `buffer`: the word
 * is returned, `buffer` keeps what follows the `c`, or becomes empty. An empty word gives NULL,
 * and its `c` is taken all the same. Caller frees with free(). */
char* strMakeWord(char* buffer, int c);

/* Delete in place: every CR and LF; all white space; every byte `c`; the white space, line ends
 * included, at the start; the same at the end. */
char* strRmCrLf(char* text);
char* strRmWhiteSpace(char* text);
char* strRmChar(char* text, int c);
char* strRmHeadWhiteSpace(char* text);
char* strRmTailWhiteSpace(char* text);

/* In place, byte for byte: every TAB becomes a blank; A to Z become a to z. For names and
 * keywords: the second half of a two-byte character can be a letter. */
char* strTabToSpc(char* text);
char* strToLwr(char* text);

/* 1 when the text holds a byte of 0x80 or above (Korean or any other 8-bit text), else 0. */
int strChkHan(const char* text);

/* Copies into `dst` the text of `src` between the first byte delimiters[0] and the next
 * delimiters[1] after it ("<>", "[]"; a single delimiter serves for both). `dst` has room for all
 * of `src` and may be `src`. Returns `dst`; NULL, with `dst` empty, when either byte is missing. */
char* getArgs(char* dst, const char* src, const char* delimiters);

/* Growable text: a new empty one; `text` appended to it, giving the buffer, which may have moved.
 * `length` (bytes without the NUL) and `capacity` (bytes allocated, a multiple of `step`) are the
 * caller's, 0 for a new text and passed on unchanged. n appends cost O(n). When memory is out, or
 * the text would pass INT_MAX, the buffer is freed and this and all further appends give NULL.
 * Caller frees with free(). */
char* memStrInit(void);
char* memStrCat(char* buffer, const char* text, int step, int* length, int* capacity);

/* ---- page text ------------------------------------------------------------------------------
 * Links have one canonical form, the only markup that strConvHTMLStr() lets through:
 *
 *     <A HREF="URL" TARGET="_blank" REL="noopener noreferrer">TEXT</A>
 *
 * URL is http://, https:// or ftp:// (any case) and URL bytes (RFC 3986), or mailto: and a mail
 * address (RFC 5322 dot-atoms); TEXT is the same without mailto:. Neither holds a blank, a control
 * byte, any of " < > \ ^ ` { | } or a byte of 0x80 or above. All operations take linear time,
 * give an empty text for one, and the first two also when memory is out: never unescaped text.
 * Two-byte characters pass whole: a byte behind one of 0x80 or above never belongs to an address,
 * and HZ sections (RFC 1843) are passed over as a unit. */

/* New text in which web and mail addresses are links of the canonical form. Plain text and HTML
 * alike: tags, comments, the contents of script, style, title, textarea and their like, and
 * existing anchors stay as they stand, except that an address in angle brackets
 * ("<kim@example.org>") counts as text. Punctuation behind an address stays outside the link, and
 * after 20,000 links addresses stay text. Caller frees with free(). */
char* strToHyperLink(const char* text);

/* New text made fit to stand in an HTML page: &, <, > and " become character references, canonical
 * links (and nothing else) stay links, each line end (LF or CR LF) becomes "<BR>" and `lineBreak`
 * (NULL: nothing more), blanks at the start of a line and after another blank become "&nbsp;", a
 * TAB four of them, a CR alone a blank. Other control bytes are dropped. A GB2312 character of an
 * HZ section one of whose bytes is &, <, > or " becomes a numeric character reference outside the
 * section. Caller frees with free(). */
char* strConvHTMLStr(const char* text, const char* lineBreak);

/* New text in which every occurrence of `token` (exact case, left to right, not overlapping) is
 * `replacement` (NULL: nothing). An absent or empty token gives a copy. Caller frees with free().
 * */
char* strConvTokenStr(const char* text, const char* token, const char* replacement);

/* New text without HTML markup: tags, comments, declarations and the contents of script and style
 * go, of an address in angle brackets only these; everything else, character references and line
 * ends included, stays byte for byte. Only what a browser reads as a tag counts ("a < b" stays). A
 * tag or comment that does not end reaches to the end of the text. Caller frees with free(). */
char* strStripHTMLTag(const char* text);

/* New text for a WML 1.1 page: < and > become character references and "$", WML's sign for
 * variables, is doubled, always; of the bytes that `chars` names, &, " and \ become character
 * references, LF becomes "<br/>" and LF (a CR before it goes), any other is dropped. Second bytes
 * of two-byte characters stay. Caller frees with free(). */
char* strConvWMLStr(const char* text, const char* chars);

/* ---- CGI ----------------------------------------------------------------------------------- */
/* The request, as RFC 3875 passes it. Texts are "" when missing, over-long or (address) not made
 * of address characters; contentLength is 0 when missing, malformed or negative. cgiGetEnv() fills
 * a record. Borrowed: its texts belong to the environment. */
typedef struct CgiEnv {
    const char *remoteAddr, *userAgent, *requestMethod, *queryString, *cookie, *contentType;
    long contentLength;
} CgiEnv;
void cgiGetEnv(CgiEnv* env);

/* Prints "Content-Type: <contentType>" and the empty line that ends a CGI header, lines ended by
 * LF. Control bytes in the type are dropped; NULL or empty counts as application/octet-stream. A
 * text type without a charset gets "; charset=" and the page character set if the host has set
 * one. */
void cgiMimeHeader(const char* contentType);

/* The browser's version when it names itself MSIE ("MSIE 5.5" gives 5.5), else 0. The language of
 * the browser's pages: 1 HTML, 2 WML (it accepts text/vnd.wap.wml and no HTML). */
float cgiGetMSIEVer(void);
int cgiGetBrowserLangType(void);

/* Value of the request's cookie `name` (exact case, the first of several, double quotes around it
 * removed, RFC 6265); NULL when there is none, or it is longer than 4096 bytes or holds a control
 * byte. Static: valid until the fourth call after this one. */
char* cgiCkGetVal(const char* name);

/* New text with every byte URL-encoded as %XX except letters, digits, "-", "_", "." and the blank,
 * which cgiSpcToPlus() then turns into "+" in place (application/x-www-form-urlencoded). Caller
 * frees with free(). */
char* cgiCharToHex(const char* text);
char* cgiSpcToPlus(char* text);

/* ---- page frame ----------------------------------------------------------------------------
 * Print one piece each of the frame of a page, in this order: HTML, HEAD, the style sheet of
 * message bodies (class "textbody"), end of HEAD, BODY with the background colour (a colour name or
 * #rrggbb; anything else is left out), end of BODY, end of HTML. */
void htmlStart(void);
void htmlHeadStart(void);
void htmlBaseStyle(void);
void htmlHeadEnd(void);
void htmlBodyStart(const char* background);
void htmlBodyEnd(void);
void htmlEnd(void);

/* ---- templates and message table ----------------------------------------------------------- */
/* Prints a directive's output to standard output. `arg` is the directive's argument text, or NULL;
 * `slot` is the address that the table gives: of the `MailInfo *`, `MailBody *`, `MailAddress *`,
 * `MailView *`, `char *` or (pfnPrtInt) `int` that the caller has bound, which the callback may
 * change. A Directive is one row of a table that ends with an all-zero row. */
typedef void (*PrintFn)(const char* arg, void** slot);
typedef struct Directive {
    char name[52];
    PrintFn print;
    void** slot;
    long reserved;
} Directive;

/* New text: the template file `templateName` (no path) of the language `templateLang`, from
 * conf.docRootDir "/template/" <language> <number> "/". The language is a code such as "kor" (NULL
 * or "": the page's); the number is the cookie "tnum", or conf.defaultTemplateNum when that is 0
 * or its folder lacks the file. NULL when there is no such file. Caller frees with free(). */
char* getTemplateStr(const char* templateName, const char* templateLang);

/* The page's language: 1 English, 2 Japanese, 3 Chinese, 4 Korean; from the cookie "lang" (its
 * first three characters: eng, jpn, chn, kor), else from conf.defaultTemplateLang, else 1. */
int getTemplateLang(void);

/* Copies the template `file`, from its position on, to standard output and runs its directives.
 * "[%NAME%]" or "[%NAME argument%]" on one line, NAME of letters, digits and "_", calls the print
 * function of the row with that name (exact case), or of the row DEFAULT when no row has it;
 * without either it prints nothing. Anything else, a "[%" without end included, is copied. */
void strmParseDirective(FILE* file, const Directive* table);

/* Directives for plain values: print the text *slot as it stands, or the int at slot in decimal. A
 * NULL slot or text prints nothing. */
void pfnPrtStr(const char* arg, void** slot);
void pfnPrtInt(const char* arg, void** slot);

/* Text of message `number` from the message table `directory`/msg.<language>, with the language
 * code of `language` (1 eng, 2 jpn, 3 chn, 4 kor; eng for others): one message a line, its number,
 * a TAB, its text; other lines are comments, and the first of equal numbers counts. NULL when the
 * file or the number is missing. Borrowed: belongs to the table, which is read again when another
 * directory or language is asked for or the file has changed. */
char* msgGet(const char* directory, int number, int language);

/* ---- files --------------------------------------------------------------------------------- */
/* 1 when something exists at the path (symbolic links followed), else 0. */
int chkExistFile(const char* path);

/* Gives the path that owner (user name), group (group name) and permission mode (octal). NULL, ""
 * or an unknown name leaves that part as it is. A symbolic link is not followed. 0, or -1 when any
 * part failed; the others are done all the same. */
int fileChgStat(const char* path, const char* owner, const char* group, int mode);

/* Makes the contents of `dst` those of `src`. An existing `dst` stays the same file (inode, mode,
 * owner, links) and is shortened last; a new one has mode 0600. Regular files only, not onto
 * itself. 0, or -1 with `dst` in an unknown state. The data is not synced to disk. */
int fileCopy(const char* src, const char* dst);

/* Line `n` (1 is the first) of a text file without its line end, NULL when there is none. The last
 * line needs no line end; fileTotalLine() counts it too, and gives 0 for a file that cannot be
 * read. Caller frees with free(). */
char* fileGetLine(const char* path, int n);
int fileTotalLine(const char* path);

/* Reads record `n` (1 is the first) of a file of records of `size` bytes into `buffer`: the number
 * of bytes read, -1 when there is no such record. A shorter last record counts; the rest of the
 * buffer is zeroed. A full record has no NUL after it. */
int fileGetRecord(const char* path, char* buffer, int size, int n);

/* New text of the next `length` bytes of the stream and a NUL, fewer when the stream ends before;
 * NULL when nothing can be read. Memory is taken for what is there, not for what is asked. Caller
 * frees with free(). */
char* fileStrmGetStr(int length, FILE* stream);

/* Size of the open file in bytes, unwritten output included; its position stays. 0 when unknown. */
long fileStrmGetSize(FILE* stream);

/* The part of the path after its last "/", the whole path without one; NULL when that is empty.
 * Borrowed: belongs to the owner of `path`. */
char* fileGetNameFromFilePath(const char* path);

/* Space left for unprivileged processes on the directory's file system, in MiB (2^20 bytes, rounded
 * down, at most UINT_MAX); 0 when the directory does not exist. */
unsigned int getDiskFreeSize(const char* directory);

/* ---- sockets ------------------------------------------------------------------------------- */
/* Connects to a port of a host (name or address, IPv4 and IPv6; "host:port" replaces port 25) by
 * TCP, with time limits on connecting, reading and writing. The descriptor, negative on failure;
 * sockClose() closes it. A peer that goes away never raises SIGPIPE. sockGetStatCode() reads a
 * whole SMTP reply (RFC 5321) in the socket's SO_RCVTIMEO (else 10 minutes): its code, else 0. */
int sockConnect(const char* host, int port);
int sockGetStatCode(FILE* stream);
void sockClose(int fd);

/* ---- dates, random numbers, system ---------------------------------------------------------- */
/* Names of days, Sunday first, and of months, January first; a NULL ends each. The English ones
 * are those of RFC 5322 ("Sun", "Jan"); the Korean ones are single syllables in EUC-KR. */
extern const char* const week_eng[];
extern const char* const week_kor[];
extern const char* const month_eng[];

/* Local time: the time value of a date (month 1 to 12; values beyond a unit's range carry over),
 * -1 when there is none; year, month (1 to 12) and day (1 to 31) of a time value, 0 when it has
 * none. */
time_t getTs(int year, int month, int day, int hour, int minute, int second);
int getYear(time_t t);
int getMonth(time_t t);
int getDay(time_t t);

/* Seeds the generator, which works without it too; an unpredictable integer from 0 to n - 1, each
 * equally likely, 0 for n of 1 or less. */
void initRandom(void);
int getRandom(int n);

/* Short name of the operating system, such as "Linux". Static: valid until the next call. */
char* getUnixName(void);

/* The user id that an authentication code carries if it was made with `key` and has not expired,
 * else NULL. Codes are made as the implementation has it (here: auth_code.h). Static: valid until
 * the next call. */
char* strGetAuthCodeVal(const char* authCode, const char* key);

/* ---- character-set converter ---------------------------------------------------------------- */
/* The contract of POSIX iconv_open(), iconv() and iconv_close(), errno included. Names are matched
 * ignoring case: those of the page and mail character sets (EUC-KR, ISO-2022-KR, SHIFT-JIS,
 * EUC-JP, ISO-2022-JP, GB2312, HZ, BIG5, UTF-8, UTF-7, ISO-8859-n, US-ASCII) and the aliases that
 * mail uses. A conversion from a set to itself checks that the text is valid in it. */
typedef void* msiconv_t;
msiconv_t msiconv_open(const char* target, const char* source);
size_t msiconv(msiconv_t cd, char** in, size_t* inLeft, char** out, size_t* outLeft);
int msiconv_close(msiconv_t cd);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif

#endif
