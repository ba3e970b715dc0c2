#include "tree.h"

namespace kit {

std::string shown(const char* text) {
    return text ? text : "-";
}

attalven::OwnedMessage parse(const std::string& text, const char* msgId) {
    File f = fileOf(text);
    return attalven::OwnedMessage(mailProcessing(0, static_cast<int>(text.size()), msgId, f.get()));
}

std::string tree(const MailBody* node, const std::string& file) {
    std::string dump;
    for (; node; node = node->next) {
        if (!dump.empty()) dump += ' ';
        dump += std::string(mime_types[node->type]) + "/" + shown(node->subType);
        if (node->fileName) dump += " \"" + std::string(node->fileName) + "\"";
        if (node->encoding) dump += " enc" + std::to_string(node->encoding);
        if (!node->isAttachment) dump += " inline";
        if (node->type == attalven::kMultipart)
            dump += "[" + tree(node->child, file) + "]";
        else
            dump += "{" +
                    file.substr(static_cast<size_t>(node->bodyOffset),
                                static_cast<size_t>(node->bodySize)) +
                    "}";
    }
    return dump;
}

}  // namespace kit
