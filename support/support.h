#ifndef ATTALVEN_SUPPORT_SUPPORT_H
#define ATTALVEN_SUPPORT_SUPPORT_H

/*
 * The operations that a calling program links in beside libattalven.so. libattalven_support.so is
 * one implementation; any other library with these declarations can take its place.
 *
 * Ownership: strSafeAssign, msgGet, cgiCkGetVal, strGetAuthCodeVal, getUnixName and
 * fileGetNameFromFilePath return borrowed texts; getTemplateStr, fileGetLine, fileStrmGetStr,
 * strMakeWord, the strConv... family, strToHyperLink, strStripHTMLTag and cgiCharToHex return new
 * heap texts (free) or NULL; in-place operations return their argument.
 */

#include <stddef.h>
#include <stdio.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

/* text */
const char* strSafeAssign(const char* text);
int strCaseCmp(const char* a, const char* b);
int strNCaseCmp(const char* a, const char* b, int n);
char* strCaseStr(const char* text, const char* token);
char* strChrNextStr(const char* text, int c);
char* strMakeWord(char* buffer, int c);
char* strRmCrLf(char* text);
char* strRmWhiteSpace(char* text);
char* strRmHeadWhiteSpace(char* text);
char* strRmTailWhiteSpace(char* text);
char* strRmChar(char* text, int c);
char* strTabToSpc(char* text);
char* strToLwr(char* text);
int strChkHan(const char* text);
char* getArgs(char* dst, const char* src, const char* delimiters);
char* memStrInit(void);
char* memStrCat(char* buffer, const char* text, int step, int* length, int* capacity);
/* page text */
char* strConvHTMLStr(const char* text, const char* lineBreak);
char* strToHyperLink(const char* text);
char* strConvTokenStr(const char* text, const char* token, const char* replacement);
char* strStripHTMLTag(const char* text);
char* strConvWMLStr(const char* text, const char* chars);
/* CGI */
typedef struct CgiEnv {
    const char *remoteAddr, *userAgent, *requestMethod, *queryString, *cookie, *contentType;
    long contentLength;
} CgiEnv;
void cgiMimeHeader(const char* contentType);
void cgiGetEnv(CgiEnv* env);
float cgiGetMSIEVer(void);
int cgiGetBrowserLangType(void);
char* cgiCkGetVal(const char* name);
char* cgiCharToHex(const char* text);
char* cgiSpcToPlus(char* text);
/* page frame */
void htmlStart(void);
void htmlHeadStart(void);
void htmlBaseStyle(void);
void htmlHeadEnd(void);
void htmlBodyStart(const char* background);
void htmlBodyEnd(void);
void htmlEnd(void);
/* templates and message table */
typedef void (*PrintFn)(const char* arg, void** slot);
typedef struct Directive {
    char name[52];
    PrintFn print;
    void** slot;
    long reserved;
} Directive;
char* getTemplateStr(const char* templateName, const char* templateLang);
int getTemplateLang(void);
void strmParseDirective(FILE* file, const Directive* table);
void pfnPrtStr(const char* arg, void** slot);
void pfnPrtInt(const char* arg, void** slot);
char* msgGet(const char* directory, int number, int language);
/* files */
int chkExistFile(const char* path);
int fileChgStat(const char* path, const char* owner, const char* group, int mode);
int fileCopy(const char* src, const char* dst);
char* fileGetLine(const char* path, int n);
int fileTotalLine(const char* path);
int fileGetRecord(const char* path, char* buffer, int size, int n);
char* fileStrmGetStr(int length, FILE* stream);
long fileStrmGetSize(FILE* stream);
char* fileGetNameFromFilePath(const char* path);
unsigned int getDiskFreeSize(const char* directory);
/* sockets */
int sockConnect(const char* host, int port);
int sockGetStatCode(FILE* stream);
void sockClose(int fd);
/* dates, random numbers, system */
extern const char* const week_eng[];
extern const char* const week_kor[];
extern const char* const month_eng[];
time_t getTs(int year, int month, int day, int hour, int minute, int second);
int getYear(time_t t);
int getMonth(time_t t);
int getDay(time_t t);
void initRandom(void);
int getRandom(int n);
char* getUnixName(void);
char* strGetAuthCodeVal(const char* authCode, const char* key);
/* character-set converter: the contract of POSIX iconv */
typedef void* msiconv_t;
msiconv_t msiconv_open(const char* target, const char* source);
size_t msiconv(msiconv_t cd, char** in, size_t* inLeft, char** out, size_t* outLeft);
int msiconv_close(msiconv_t cd);

#ifdef __cplusplus
}
#endif

#endif
