// Indexes any bytes as a folder: the entries must be the messages of the model, in order, apart
// from each other and without holes, and a loop of fldrGetMsgSizeInfo() must see the same.

#include "fuzz.h"
#include "tests/kit/folder_model.h"

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, size_t size) {
    std::string content = fuzz::textOf(data, size);
    FILE* stream = size ? fmemopen(content.data(), size, "r") : nullptr;
    if (!stream) return 0;
    std::string expected = kit::spans(kit::ModelFolder(content));
    Fldr* folder = fldrProcessing(stream);
    fuzz::require(folder && kit::spans(folder) == expected && kit::spans(stream) == expected);
    fldrFree(folder);
    fclose(stream);
    return 0;
}
