// The questions that a page asks about a message's structure: one walk over the leaf parts each.

#include "message_questions.h"

#include "mail/base/bounded_text.h"
#include "mail/display.h"

namespace attalven {

Text mediaTypeText(const MailBody& part) {
    Text text;
    text.append(typeName(part.type));
    text.append('/');
    text.append(viewOf(part.subType));
    return text;
}

int bodyTypeOf(const LeafParts& parts) {
    return parts.any(
               [](const MailBody& part) { return isBodyText(part) && hasSubType(part, "html"); })
               ? 2
               : 1;
}

bool hasReferences(const LeafParts& parts) {
    return parts.any([](const MailBody& part) { return part.contentId || part.location; });
}

namespace {

struct SMimeType {
    string_view subType;
    int answer;
};
constexpr SMimeType kSMimeTypes[] = {
    {"x-pkcs7-mime", 1},
    {"x-pkcs7-encrypt_body", 1},
    {"x-pkcs7-sign_and_encrypt_body", 1},
    {"x-pkcs7-signature", 2},
};

}  // namespace
}  // namespace attalven

using namespace attalven;

int mailChkAttachFile(MailBody* root) {
    return LeafParts(root).any([](const MailBody& part) { return part.fileName != nullptr; });
}

int mailChkFwdMail(MailBody* root) {
    return LeafParts(root).any([](const MailBody& part) { return part.type == kMessage; });
}

int mailChkCID(MailBody* root) {
    return hasReferences(LeafParts(root));
}

int mailChkBodyType(MailBody* root) {
    return bodyTypeOf(LeafParts(root));
}

int mailChkSMime(MailBody* root) {
    for (const MailBody& part : LeafParts(root))
        for (const SMimeType& row : kSMimeTypes)
            if (hasSubType(part, row.subType)) return row.answer;
    return 0;
}

char* mailGetCharSet(MailBody* root) {
    static char charSet[31];
    cutCopy(charSet, {});
    for (const MailBody& part : LeafParts(root)) {
        if (viewOf(part.charSet).empty()) continue;
        cutCopy(charSet, part.charSet);
        break;
    }
    return charSet;
}
