// Page text: plain text made fit for HTML and WML pages, tokens replaced, markup taken off. Nothing
// but the canonical link passes strConvHTMLStr() as markup, whoever wrote it: it can only lead to
// the address that it shows. Two-byte characters stay whole: &, <, > and " are below 0x40, where no
// second byte of EUC-KR, Shift-JIS, GB2312 or Big5 lies; HZ's are dealt with character by
// character.

#include <iconv.h>

#include <cstring>

#include "byte_blocks.h"
#include "hz_section.h"
#include "link_text.h"
#include "mail/base/byte_set.h"
#include "mail/base/text.h"
#include "markup.h"
#include "safe_result.h"
#include "support.h"

using namespace attalven;

namespace {

constexpr string_view reference(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        default:
            return {};
    }
}

/// Writes HZ sections with every character that holds a byte of markup as a numeric character
/// reference, so that the page is right for a browser that knows HZ and safe in one that does not.
class HzWriter {
  public:
    HzWriter(Text& out, string_view markup) : out_(out), markup_(markup) {}
    HzWriter(const HzWriter&) = delete;
    HzWriter& operator=(const HzWriter&) = delete;
    ~HzWriter() {
        if (open_) iconv_close(converter_);
    }

    void write(string_view section) {
        bool shifted = false;
        for (size_t at = 2; at + 2 < section.size(); at += 2) {
            string_view pair = head(tail(section, at), 2);
            bool plain = !markup_.has(pair[0]) && !markup_.has(pair[1]);
            if (plain != shifted) out_.append(plain ? "~{" : "~}");
            shifted = plain;
            if (plain) {
                out_.append(pair);
            } else {
                out_.appendFormat("&#%u;", codePoint(pair));
            }
        }
        if (shifted) out_.append("~}");
    }

  private:
    unsigned codePoint(string_view pair) {
        if (!open_) converter_ = iconv_open("UCS-4BE", "GB2312");
        open_ = converter_ != iconv_t(-1);
        char euc[] = {static_cast<char>(pair[0] | 0x80), static_cast<char>(pair[1] | 0x80)};
        unsigned char wide[4];
        char *in = euc, *out = reinterpret_cast<char*>(wide);
        size_t inLeft = sizeof euc, outLeft = sizeof wide;
        if (!open_ || iconv(converter_, &in, &inLeft, &out, &outLeft) != 0 || outLeft) {
            if (open_) iconv(converter_, nullptr, nullptr, nullptr, nullptr);
            return 0xFFFD;
        }
        return static_cast<unsigned>(wide[1] << 16 | wide[2] << 8 | wide[3]);
    }

    Text& out_;
    ByteSet markup_;
    iconv_t converter_ = nullptr;
    bool open_ = false;
};

constexpr ByteSet kHtmlStops = [] {
    constexpr char kControls[] =
        "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10"
        "\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1A\x1B\x1C\x1D\x1E\x1F\x7F&<>\"~";
    return ByteSet(kControls);
}();

/// The bytes among the sixteen at `p` that an HTML page does not take as they stand: those of
/// kHtmlStops, and a blank behind a blank.
BlockMask htmlStops(const char* p) {
    ByteBlock c = loadBlock(p);
    return (c < 0x20) | (c == '&') | (c == '<') | (c == '>') | (c == '"') | (c == '~') |
           (c == 0x7F) | ((c == ' ') & (loadBlock(p - 1) == ' '));
}

class HtmlWriter {
  public:
    HtmlWriter(string_view s, string_view lineBreak) : s_(s), lineBreak_(lineBreak) {
        out_.room(s.size() + s.size() / 8);
    }

    char* run() {
        while (at_ < s_.size()) {
            size_t end = plainEnd();
            out_.append(head(tail(s_, at_), end - at_));
            at_ = end;
            if (at_ < s_.size()) special(s_[at_]);
        }
        return takeSafely(out_);
    }

  private:
    bool blankShows() const {
        return at_ == 0 || string_view(" \t\n").find(s_[at_ - 1]) != string_view::npos;
    }

    /// End of the run at at_ that goes to the page as it stands.
    size_t plainEnd() const {
        if (s_[at_] == ' ' || kHtmlStops.has(s_[at_])) return at_;
        return findByBlocks(s_, at_ + 1, htmlStops, [this](size_t i) {
            return kHtmlStops.has(s_[i]) || (s_[i] == ' ' && s_[i - 1] == ' ');
        });
    }

    void put(string_view s, size_t taken) {
        out_.append(s);
        at_ += taken;
    }

    void special(char c) {
        string_view here = tail(s_, at_);
        switch (c) {
            case ' ':
                return put(blankShows() ? "&nbsp;" : " ", 1);
            case '\t':
                return put("&nbsp;&nbsp;&nbsp;&nbsp;", 1);
            case '\n':
                out_.append("<BR>");
                return put(lineBreak_, 1);
            case '\r':  // a line end's own goes with it
                return put(here.starts_with("\r\n") ? "" : " ", 1);
            case '~':
                if (size_t length = hzSectionLength(s_, at_)) {
                    hz_.write(head(here, length));
                    at_ += length;
                    return;
                }
                return put("~", 1);
            case '<':
                if (Link link = canonicalLink(here)) return keep(link);
                [[fallthrough]];
            default:
                put(reference(c), 1);  // other control bytes have none and go
        }
    }

    void keep(const Link& link) {
        out_.append(kLinkOpen);
        escape(link.url);
        out_.append(kLinkMiddle);
        escape(link.text);
        out_.append(kLinkClose);
        at_ += link.length;
    }

    void escape(string_view url) {
        for (size_t amp; (amp = url.find('&')) != string_view::npos; url = tail(url, amp + 1)) {
            out_.append(head(url, amp));
            out_.append(reference('&'));
        }
        out_.append(url);
    }

    string_view s_, lineBreak_;
    Text out_;
    HzWriter hz_{out_, "&<>\""};
    size_t at_ = 0;
};

/// What becomes of byte `c` on a WML page whose caller names `chars`.
string_view wmlOf(const char& c, string_view chars) {
    bool named = chars.find(c) != string_view::npos;
    switch (c) {
        case '<':
        case '>':
            return reference(c);
        case '$':
            return "$$";
        case '&':
        case '"':
            return named ? reference(c) : string_view(&c, 1);
        case '\\':
            return named ? "&#92;" : "\\";
        case '\n':
            return named ? "<br/>\n" : "\n";
        default:
            return named ? string_view() : string_view(&c, 1);
    }
}

}  // namespace

char* strConvHTMLStr(const char* text, const char* lineBreak) {
    return text ? HtmlWriter(text, viewOf(lineBreak)).run() : nullptr;
}

char* strConvTokenStr(const char* text, const char* token, const char* replacement) {
    if (!text) return nullptr;
    string_view rest = text, from = viewOf(token), to = viewOf(replacement);
    Text out;
    out.room(rest.size());
    while (!from.empty()) {
        // memmem takes linear time whatever the token.
        auto hit =
            static_cast<const char*>(memmem(rest.data(), rest.size(), from.data(), from.size()));
        if (!hit) break;
        auto before = static_cast<size_t>(hit - rest.data());
        out.append(head(rest, before));
        out.append(to);
        rest = tail(rest, before + from.size());
    }
    out.append(rest);
    return out.take();
}

char* strConvWMLStr(const char* text, const char* chars) {
    if (!text) return nullptr;
    string_view s = text, named = viewOf(chars);
    Text out;
    HzWriter hz(out, "&<>\"$");
    for (size_t at = 0; at < s.size();) {
        string_view here = tail(s, at);
        if (size_t length = s[at] == '~' ? hzSectionLength(s, at) : 0) {
            hz.write(head(here, length));
            at += length;
        } else if (byteOf(s[at]) >= 0x80 && here.size() > 1 && byteOf(here[1]) >= 0x40) {
            out.append(head(here, 2));
            at += 2;
        } else {
            bool lineEnd = here.starts_with("\r\n") && named.find('\n') != string_view::npos;
            if (!lineEnd) out.append(wmlOf(s[at], named));
            at++;
        }
    }
    return out.take();
}

char* strStripHTMLTag(const char* text) {
    if (!text) return nullptr;
    string_view s = text;
    Text out;
    out.room(s.size());
    size_t done = 0;
    // Copies what stands before the markup at `at`. A "<" left at the end must not make a tag of
    // the text behind the markup.
    auto copyUpTo = [&](size_t at) {
        out.append(head(tail(s, done), at - done));
        if (!out.empty() && out.view().back() == '<') out.append(' ');
    };
    for (size_t at = 0; (at = findBytes<'<', '~'>(s, at)) < s.size();) {
        string_view here = tail(s, at);
        if (s[at] == '~') {
            at += std::max<size_t>(hzSectionLength(s, at), 1);
            continue;
        }
        if (Address address = bracketedAddress(here)) {  // only its brackets go
            copyUpTo(at);
            out.append(head(tail(here, address.begin), address.end - address.begin));
            done = at += here.find('>') + 1;
            continue;
        }
        size_t length = markupLength(here);
        if (length == 0) {
            at++;
            continue;
        }
        string_view name = startTagName(head(here, length));
        if (equalNoCase(name, "script") || equalNoCase(name, "style"))
            length += rawTextLength(tail(here, length), name);
        copyUpTo(at);
        done = at += length;
    }
    out.append(tail(s, done));
    return out.take();
}
