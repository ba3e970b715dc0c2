// Indexes any bytes as a folder: the entries must be the messages of the model, in order, apart
// from each other and without holes, and a loop of fldrGetMsgSizeInfo() must see the same.

#include <cstdio>
#include <cstdlib>
#include <string>

#include "mail/mail.h"
#include "tests/kit/folder_model.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    std::string content(reinterpret_cast<const char*>(data), size);
    FILE* stream = size ? fmemopen(content.data(), size, "r") : nullptr;
    if (!stream) return 0;
    kit::ModelFolder model(content);
    Fldr* folder = fldrProcessing(stream);
    if (!folder || fldrMsgMax(folder) != static_cast<int>(model.messages.size())) abort();
    rewind(stream);
    size_t at = model.before;
    for (int n = 1; n <= fldrMsgMax(folder); n++) {
        const kit::ModelMessage& m = model.messages[static_cast<size_t>(n) - 1];
        int offset = 0, header = 0, length = 0;
        if (!fldrGetMsgSizeInfo(&offset, &header, &length, stream)) abort();
        if (offset != static_cast<int>(at) || header != static_cast<int>(m.headerSize()) ||
            length != static_cast<int>(m.size()))
            abort();
        if (fldrMsgEntryPos(n, folder) != offset || fldrMsgHdrSize(n, folder) != header ||
            fldrMsgSize(n, folder) != length)
            abort();
        at += m.size();
    }
    int none;
    if (at != size || fldrGetMsgSizeInfo(&none, &none, &none, stream)) abort();
    fldrFree(folder);
    fclose(stream);
    return 0;
}
