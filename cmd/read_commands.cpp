// The commands that only read a folder: list, show, extract, count, dump.

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>

#include "commands.h"
#include "open_folder.h"
#include "terminal_text.h"

namespace cmd {

namespace {

std::string dateText(time_t t) {
    struct tm tm;
    char text[32] = "-";
    if (t != 0 && localtime_r(&t, &tm)) strftime(text, sizeof text, "%Y-%m-%d %H:%M", &tm);
    return text;
}

/// R read, O old, ! urgent; a dot where a flag is not set.
std::string flagText(const FldrMsg& e) {
    return {e.status & 0x10 ? 'R' : '.', e.status & 0x100 ? 'O' : '.', e.priority < 3 ? '!' : '.'};
}

/// Left-aligned in `columns` terminal columns; East Asian wide characters take two.
std::string padded(const std::string& utf8, int columns) {
    std::string out;
    int used = 0;
    for (size_t i = 0; i < utf8.size();) {
        unsigned char c = static_cast<unsigned char>(utf8[i]);
        size_t bytes = c < 0x80 ? 1 : c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
        bool halfKana =
            c == 0xEF && i + 1 < utf8.size() && static_cast<unsigned char>(utf8[i + 1]) >= 0xBD;
        int width = bytes >= 3 && !halfKana ? 2 : 1;
        if (used + width > columns) break;
        out += c == '\n' || c == '\t' ? " " : utf8.substr(i, bytes);
        used += width;
        i += bytes;
    }
    return out + std::string(static_cast<size_t>(columns - used), ' ');
}

int listFolder(const Args& args) {
    if (args.size() != 1) throw UsageError("one folder, please");
    ReadFolder folder(args[0]);
    for (int n = 1; n <= folder.count(); n++) {
        const FldrMsg& e = folder.entry(n);
        std::string block = folder.bytes(e.offset, e.hdrSize), charset;
        std::string from = headerValue(block, "From"), subject = headerValue(block, "Subject");
        // Only a header with bytes outside ASCII and no encoded word needs the body's character
        // set.
        bool raw = (from + subject).find_first_of('\x1B') != std::string::npos;
        for (char c : from + subject) raw |= static_cast<unsigned char>(c) >= 0x80;
        if (raw) charset = bodyCharset(folder.message(n)->body);
        printf("%5d %s %-16s %s %s %d\n", n, flagText(e).c_str(), dateText(e.date).c_str(),
               padded(senderOf(from, charset), 24).c_str(),
               padded(decodeHeader(subject, charset), 44).c_str(), e.size);
    }
    return kDone;
}

int countFolder(const Args& args) {
    if (args.size() != 1) throw UsageError("one folder, please");
    ReadFolder folder(args[0]);
    printf("%d messages, %d new, %d read or old, %d bytes\n", folder.count(),
           fldrMsgNewNum(folder.get()), fldrMsgReadNum(folder.get()), fldrSize(folder.get()));
    return kDone;
}

const char* typeName(const MailBody* b) {
    return b->type >= 0 && b->type <= 7 ? mime_types[b->type] : mime_types[0];
}
const char* encodingName(const MailBody* b) {
    return b->encoding == 7                       ? "x-uuencode"
           : b->encoding >= 0 && b->encoding <= 5 ? encoding[b->encoding]
                                                  : encoding[5];
}

/// The file name as the part header has it: each encoded word names a set of its own. A name that
/// stands in no header, that of a uuencoded file, is in the set of the body, `charset`.
std::string attachmentName(const ReadFolder& folder, const MailBody* b, std::string_view charset) {
    if (const char* name = mailGetParam("name", b->params)) return decodeHeader(name, charset);
    std::string disposition =
        headerValue(folder.bytes(b->offset, b->bodyOffset - b->offset), "Content-Disposition");
    size_t semicolon = disposition.find(';');
    std::string text = semicolon == disposition.npos ? "" : disposition.substr(semicolon + 1);
    Params params(mailParseParams(text.data()));
    const char* name = mailGetParam("filename", params.get());
    return name ? decodeHeader(name, charset) : printable(pageToUtf8(b->fileName, charset));
}

void printPart(const ReadFolder& folder, const MailBody* b, int depth, int number,
               std::string_view charset) {
    printf("%*s", depth * 2, "");
    if (number >= 0) printf("%d ", number);
    printf("%s/%s", typeName(b), b->subType ? b->subType : "");
    if (number >= 0) printf(" %s, %d bytes at %d", encodingName(b), b->bodySize, b->bodyOffset);
    if (b->charSet) printf(", charset %s", printable(b->charSet).c_str());
    if (b->fileName) printf(", name \"%s\"", attachmentName(folder, b, charset).c_str());
    if (b->contentId) printf(", id %s", printable(b->contentId).c_str());
    putchar('\n');
}

/// Prints the tree; leaves carry their part numbers. The depth is bounded by the parser.
int printTree(const ReadFolder& folder, const MailBody* b, int depth, int number,
              std::string_view charset) {
    for (; b; b = b->next) {
        bool isLeaf = b->type != 5;
        printPart(folder, b, depth, isLeaf ? number : -1, charset);
        number = isLeaf ? number + 1 : printTree(folder, b->child, depth + 1, number, charset);
    }
    return number;
}

void writeOut(std::string_view bytes) {
    fwrite(bytes.data(), 1, bytes.size(), stdout);
}

std::string partText(MailBody* part, FILE* stream) {
    std::string text = decodedPart(part, stream);
    if (part->type != 6) return text;
    return printable(toUtf8(text, part->charSet ? part->charSet : "iso-8859-1"));
}

void showMessage(const ReadFolder& folder, int n) {
    const FldrMsg& e = folder.entry(n);
    Message m = folder.message(n);
    std::string block = folder.bytes(e.offset, e.hdrSize), charset = bodyCharset(m->body);
    for (const char* name : {"From", "To", "Cc", "Date", "Subject"}) {
        std::string value = headerValue(block, name);
        if (!value.empty()) printf("%s: %s\n", name, decodeHeader(value, charset).c_str());
    }
    putchar('\n');
    BodyIndex index(mailGetBody(m->body));
    MailBody* text = nullptr;
    for (MailBodyList** p = index.get(); p && *p && !text; p++)
        if ((*p)->body->type == 6) text = (*p)->body;
    if (text) writeOut(partText(text, folder.stream()));
    if (index && index.get()[0] && index.get()[1]) {
        puts("\nParts:");
        printTree(folder, m->body, 1, 0, charset);
    }
}

int showCommand(const Args& args) {
    if (args.size() < 2) throw UsageError("a folder and a message number, please");
    int n = numberOf(args[1], "the message number");
    ReadFolder folder(args[0]);
    const FldrMsg& e = folder.entry(n);
    std::string mode = args.size() > 2 ? args[2] : "";
    if (mode.empty() && args.size() == 2) {
        showMessage(folder, n);
    } else if (mode == "--raw" && args.size() == 3) {
        writeOut(folder.bytes(e.offset, e.size));
    } else if (mode == "--header" && args.size() == 3) {
        writeOut(folder.bytes(e.offset, e.hdrSize));
    } else if (mode == "--structure" && args.size() == 3) {
        Message m = folder.message(n);
        printTree(folder, m->body, 0, 0, bodyCharset(m->body));
    } else if (mode == "--part" && args.size() == 4) {
        int k = numberOf(args[3], "the part number", 0);
        Message m = folder.message(n);
        BodyIndex index(mailGetBody(m->body));
        writeOut(partText(partOf(index, k), folder.stream()));
    } else {
        throw UsageError("one of --part K, --raw, --header, --structure");
    }
    return kDone;
}

int extractCommand(const Args& args) {
    if (args.size() != 4) throw UsageError("a folder, a message, a part and a file, please");
    int n = numberOf(args[1], "the message number"), k = numberOf(args[2], "the part number", 0);
    ReadFolder folder(args[0]);
    Message m = folder.message(n);
    BodyIndex index(mailGetBody(m->body));
    MailBody* part = partOf(index, k);
    Stream out(fopen(args[3].c_str(), "wx"));
    if (!out) throw Failure(args[3] + ": " + strerror(errno));
    mailDecodeAttachFile(part, folder.stream(), out.get());
    if (fflush(out.get()) != 0 || ferror(out.get()))
        throw Failure(args[3] + ": " + strerror(errno));
    return kDone;
}

/// One field of a dump: bytes outside printable ASCII, and "%", as %XX.
void printField(const char* text) {
    putchar('\t');
    for (const char* p = text ? text : ""; *p; p++) {
        unsigned char c = static_cast<unsigned char>(*p);
        printf(c > 0x20 && c < 0x7F && c != '%' ? "%c" : "%%%02X", c);
    }
}

int dumpFolder(const Args& args) {
    if (args.size() != 1) throw UsageError("one folder, please");
    ReadFolder folder(args[0]);
    for (int n = 1; n <= folder.count(); n++) {
        const FldrMsg& e = folder.entry(n);
        Message m = folder.message(n);
        BodyIndex index(mailGetBody(m->body));
        int leaves = 0;
        while (index && index.get()[leaves]) leaves++;
        printf("%d\t%d\t%d\t%d\t%x\t%d\t%lld\t%d", e.num, e.offset, e.hdrSize, e.size, e.status,
               e.priority, static_cast<long long>(e.date), leaves);
        const char* name = m->from ? m->from->name : nullptr;
        for (const char* field :
             std::initializer_list<const char*>{e.msgId, e.from, name, e.subject})
            printField(field);
        putchar('\n');
    }
    return kDone;
}

constexpr Command kCommands[] = {
    {"list", "FOLDER", "one line a message: number, flags, date, sender, subject, size",
     listFolder},
    {"show", "FOLDER N [--part K | --raw | --header | --structure]", "a message, or one view of it",
     showCommand},
    {"extract", "FOLDER N K FILE", "writes part K, decoded, to the new file FILE", extractCommand},
    {"count", "FOLDER", "how many messages, how many new, how many bytes", countFolder},
    {"dump", "FOLDER",
     "for scripts: number, offset, header size, size, flags, priority, date, parts, Message-ID, "
     "address, name, subject, separated by tabs, other bytes than printable ASCII as %XX",
     dumpFolder},
};

}  // namespace

std::span<const Command> readCommands() {
    return kCommands;
}

}  // namespace cmd
