#include "open_folder.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "commands.h"

namespace cmd {

ReadFolder::ReadFolder(const std::string& path) : path_(path), stream_(fopen(path.c_str(), "r")) {
    struct stat st;
    if (!stream_) throw Failure(path + ": " + strerror(errno));
    if (fstat(fileno(stream_.get()), &st) != 0 || !S_ISREG(st.st_mode))
        throw Failure(path + ": not a file");
    folder_.reset(fldrProcessing(stream_.get()));
    if (!folder_) throw Failure(path + ": no memory for the index");
    if (count() == 0) throw Failure(path + ": holds no message");
}

const FldrMsg& ReadFolder::entry(int n) const {
    if (!fldrChkMsgBoundary(n, folder_.get()))
        throw Failure(path_ + ": no message " + std::to_string(n) + ", it holds " +
                      std::to_string(count()));
    return *folder_->msgs[n - 1];
}

Message ReadFolder::message(int n) const {
    const FldrMsg& e = entry(n);
    Message m(mailGetHeaderInfo(e.offset, e.size, stream_.get()));
    if (!m) throw Failure("no memory");
    mailParseBody(m.get(), stream_.get());
    return m;
}

std::string ReadFolder::bytes(int offset, int size) const {
    std::string text(static_cast<size_t>(size), '\0');
    if (fseeko(stream_.get(), offset, SEEK_SET) != 0) throw Failure(path_ + ": " + strerror(errno));
    text.resize(fread(text.data(), 1, text.size(), stream_.get()));
    return text;
}

MailBody* partOf(const BodyIndex& index, int k) {
    int count = 0;
    while (index && index.get()[count]) {
        if (count == k) return index.get()[count]->body;
        count++;
    }
    throw Failure("no part " + std::to_string(k) + ", the message has " + std::to_string(count));
}

std::string bodyCharset(MailBody* root) {
    BodyIndex index(mailGetBody(root));
    for (MailBodyList** e = index.get(); e && *e; e++)
        if ((*e)->body->charSet) return (*e)->body->charSet;
    return {};
}

std::string decodedPart(MailBody* part, FILE* stream) {
    char* text = nullptr;
    size_t size = 0;
    FILE* out = open_memstream(&text, &size);
    if (!out) throw Failure("no memory");
    mailDecodeAttachFile(part, stream, out);
    fclose(out);
    std::string decoded(text ? text : "", size);
    free(text);
    return decoded;
}

}  // namespace cmd
