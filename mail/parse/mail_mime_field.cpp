// Content-Type, Content-Transfer-Encoding and Content-Disposition. Survives values without end
// quotes, backslashes at the end, thousands of parameters and types of any length: everything is a
// counted view, and each value is copied at its own length.

#include "mail_mime_field.h"

#include "mail/base/keyword.h"
#include "mail/base/sink.h"
#include "mail/codec/encoded_word_decode.h"

namespace attalven {
namespace {

struct EncodingName {
    string_view key;
    TransferEncoding code;
};
constexpr EncodingName kEncodingNames[] = {
    {"7bit", k7Bit},     {"8bit", k8Bit},
    {"binary", kBinary}, {"quoted-printable", kQuotedPrintable},
    {"base64", kBase64}, {"x-uuencode", kUuencoded},
};

constexpr string_view kBlanks = " \t\r\n";

/// Takes a quoted value off `text`, which stands behind the opening quote.
///   quoted-string = DQUOTE *(qtext / quoted-pair) DQUOTE
/// A value without a closing quote runs to the end.
OwnedText takeQuoted(string_view& text) {
    Text value;
    size_t i = 0;
    for (; i < text.size() && text[i] != '"'; i++) {
        if (text[i] == '\\' && ++i == text.size()) break;
        value.append(text[i]);
    }
    text = tail(text, i + 1);
    return OwnedText(value.take());
}

OwnedText takeUnquoted(string_view& text) {
    string_view value = head(text, text.find_first_of(" ;"));
    text = tail(text, value.size());
    return copyText(value);
}

/// The subtype that a major type has when the field names none.
string_view defaultSubType(MediaType type) {
    switch (type) {
        case kText:
            return "plain";
        case kAudio:
            return "basic";
        case kMessage:
            return "rfc822";
        default:
            return {};
    }
}

void setOctetStream(MailBody& node) {
    node.type = kApplication;
    setText(node.subType, "octet-stream");
}

/// Sets type and subtype from "major/minor", or from a major type alone.
void setType(string_view mediaType, MailBody& node) {
    size_t slash = mediaType.find('/');
    string_view major = head(mediaType, slash);
    if (slash != string_view::npos) {
        string_view minor = tail(mediaType, slash + 1);
        setText(node.subType, head(minor, minor.find_first_of(kBlanks)));
    }
    MediaType type = majorTypeOf(major);
    node.type = type;
    if (node.subType) return;
    if (type == kUnknown) {
        Text subType;
        subType.append("x-");
        subType.append(major);
        node.type = kApplication;
        node.subType = subType.take();
    } else if (string_view minor = defaultSubType(type); !minor.empty()) {
        setText(node.subType, minor);
    }
}

}  // namespace

MediaType majorTypeOf(string_view name) {
    for (int type = kAudio; type <= kVideo; type++)
        if (equalNoCase(name, mime_types[type])) return static_cast<MediaType>(type);
    return kUnknown;
}

int encodingOf(string_view value) {
    const EncodingName* row = findKeyword<EncodingName>(kEncodingNames, value);
    return row ? row->code : kUnknownEncoding;
}

void parseMimeType(string_view value, MailBody& node) {
    Text unfolded;
    if (value.find_first_of("\r\n") != string_view::npos) {
        appendOneLine(unfolded, value);
        if (unfolded.failed()) return setOctetStream(node);
        value = unfolded.view();
    }
    size_t semicolon = value.find(';');
    if (semicolon != string_view::npos) {
        string_view params = tail(value, semicolon + 1);
        params = tail(params, params.find_first_not_of(kBlanks));
        mailFreeParam(&node.params);
        node.params = parseParams(params).release();
    }
    setType(head(value, semicolon), node);
}

//   parameter = attribute "=" value ; value = token / quoted-string
// A name takes in all that stands before its "=", words without "=" included; runs of semicolons
// count as one.
OwnedParam parseParams(string_view text) {
    Chain<MailParam, mailFreeParam> list;
    while (!text.empty()) {
        size_t equals = text.find('=');
        if (equals == string_view::npos) break;
        OwnedParam param(mailNewParam());
        if (!param) break;
        param->name = copyText(trimTail(head(text, equals))).release();
        text = trimHead(tail(text, equals + 1));
        bool quoted = !text.empty() && text.front() == '"';
        if (quoted) text = tail(text, 1);
        param->value = (quoted ? takeQuoted(text) : takeUnquoted(text)).release();
        if (!param->name || !param->value) break;
        list.append(std::move(param));
        text = tail(text, text.find(';'));
        text = tail(text, text.find_first_not_of("; \t\n\v\f\r"));
    }
    return OwnedParam(list.take());
}

OwnedParam headerParams(string_view header) {
    std::optional<string_view> params = valueAfter(header, ';');
    return params ? parseParams(*params) : nullptr;
}

void readContentType(string_view header, string_view value, MailBody& node) {
    parseMimeType(value, node);
    OwnedParam params = headerParams(header);
    if (const char* name = mailGetParam("name", params.get())) {
        free(node.fileName);
        node.fileName = decodeWords(name).release();
    }
    if (const char* charSet = mailGetParam("charset", params.get())) setText(node.charSet, charSet);
}

void readFileName(string_view header, MailBody& node) {
    if (node.fileName) return;
    OwnedParam params = headerParams(header);
    if (const char* name = mailGetParam("filename", params.get()))
        node.fileName = decodeWords(name).release();
}

string_view betweenBrackets(string_view value) {
    size_t open = value.find('<');
    if (open == string_view::npos) return {};
    string_view rest = tail(value, open + 1);
    size_t close = rest.find('>');
    return close == string_view::npos ? string_view() : head(rest, close);
}

}  // namespace attalven

using namespace attalven;

int mailGetEncType(const char* value) {
    return encodingOf(viewOf(value));
}

void mailParseMimeType(char* value, MailBody* node) {
    if (!node) return;
    if (value)
        parseMimeType(value, *node);
    else
        setOctetStream(*node);
}

MailParam* mailParseParams(char* text) {
    return parseParams(viewOf(text)).release();
}
