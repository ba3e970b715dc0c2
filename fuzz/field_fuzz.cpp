// Values of MIME fields: any bytes give types and encodings of the tables, and parameters that are
// written out quoted are read back as they were, whatever their values hold.

#include "fuzz.h"
#include "mail/base/file.h"
#include "mail/parse/mail_mime_field.h"

using namespace attalven;
using fuzz::require;

namespace {

std::string written(const MailParam* list) {
    std::string text;
    for (; list; list = list->next)
        text += std::string(list->name) + "=\"" + fuzz::escaped(list->value) + "\"; ";
    return text;
}

void checkParams(std::string text) {
    OwnedParam list(mailParseParams(text.data()));
    std::string once = written(list.get()), copy = once;
    OwnedParam again(mailParseParams(copy.data()));
    require(written(again.get()) == once);
    const MailParam *a = list.get(), *b = again.get();
    for (; a && b; a = a->next, b = b->next)
        require(strcmp(a->name, b->name) == 0 && strcmp(a->value, b->value) == 0);
    require(!a && !b);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text = fuzz::textOf(data, size).c_str();
    checkParams(text);
    OwnedBody node(mailNewBody());
    std::string value = text;
    mailParseMimeType(value.data(), node.get());
    require(value == text);
    require(node->type >= kUnknown && node->type <= kVideo && (node->subType || node->type));
    int code = mailGetEncType(text.c_str());
    require((code >= 0 && code <= 5) || code == 7);
    int major = mimeGetMajorType(text.c_str());
    require(major > 0 && major <= 7 && strlen(mimeGetSubType(text.c_str())) <= 100);
    return 0;
}
