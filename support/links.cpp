// Links in page text. The scanner goes from one byte that can matter to the next and copies what
// lies between in one piece. Its state: how far the text is copied, and whether an anchor of the
// text's own is open. Markup is passed over by the browser's own rules, so that no link opens
// inside a tag, an attribute or a script, and the number of links is bounded, so that a text of
// nothing but short addresses cannot take the process's memory.

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

constexpr int kLinksMax = 20'000;

// Behind a "<" anything else makes it text.
constexpr ByteSet kOpens = ByteSet("/!?._+-").withAlnum();

class Linker {
  public:
    explicit Linker(string_view s) : s_(s) { out_.room(s.size()); }

    char* run() {
        while ((at_ = findBytes<'<', ':', '@', '~'>(s_, at_)) < s_.size()) {
            switch (s_[at_]) {
                case '<':
                    markup();
                    break;
                case '~':
                    at_ += std::max<size_t>(hzSectionLength(s_, at_), 1);
                    break;
                case ':':
                    address(webAddressAt(s_, at_, done_));
                    break;
                default:
                    address(afterHigh(at_) ? Address{} : mailAddressAt(s_, at_, done_));
            }
        }
        copyUpTo(s_.size());
        return takeSafely(out_);
    }

  private:
    bool afterHigh(size_t at) const { return at > 0 && byteOf(s_[at - 1]) >= 0x80; }

    void copyUpTo(size_t end) {
        out_.append(head(tail(s_, done_), end - done_));
        done_ = end;
    }

    void link(size_t begin, size_t end, bool isMail) {
        string_view text = head(tail(s_, begin), end - begin);
        copyUpTo(begin);
        out_.append(kLinkOpen);
        if (isMail) out_.append(kMailto);
        out_.append(text);
        out_.append(kLinkMiddle);
        out_.append(text);
        out_.append(kLinkClose);
        done_ = at_ = end;
        links_++;
    }

    void address(Address found) {
        if (found && !inAnchor_ && links_ < kLinksMax) {
            link(found.begin, found.end, found.isMail);
        } else {
            at_ = std::max(found.end, at_ + 1);
        }
    }

    void markup() {
        string_view here = tail(s_, at_);
        if (here.size() < 2 || !kOpens.has(here[1])) {
            at_++;
            return;
        }
        if (Address found = bracketedAddress(here)) {
            found.begin += at_;
            found.end += at_;
            return address(found);
        }
        size_t length = markupLength(here);
        if (length == 0) {
            at_++;
            return;
        }
        string_view tag = head(here, length), name = startTagName(tag);
        if (equalNoCase(name, "a")) {
            inAnchor_ = findNoCase(tag, "href") != string_view::npos;
        } else if (startsWithNoCase(tag, "</a") && (length == 4 || !isAlpha(tag[3]))) {
            inAnchor_ = false;
        } else if (isRawTextElement(name)) {
            length += rawTextLength(tail(here, length), name);
        }
        at_ += length;
        copyUpTo(at_);  // nothing looks back into markup
    }

    string_view s_;
    Text out_;
    size_t at_ = 0, done_ = 0;
    int links_ = 0;
    bool inAnchor_ = false;
};

}  // namespace

char* strToHyperLink(const char* text) {
    return text ? Linker(text).run() : nullptr;
}
