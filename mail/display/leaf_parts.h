#ifndef ATTALVEN_MAIL_DISPLAY_LEAF_PARTS_H
#define ATTALVEN_MAIL_DISPLAY_LEAF_PARTS_H

// The leaf parts of a message in index order, for range-based loops, and what display asks of one.

#include "mail/base/text.h"
#include "mail/parse.h"

namespace attalven {

/// Rows of `mime_types`.
enum MediaType {
    kUnknown,
    kAudio,
    kApplication,
    kImage,
    kMessage,
    kMultipart,
    kText,
    kVideo,
};

/// Holds the body index for its lifetime; without memory for it the message has no parts.
class LeafParts {
  public:
    explicit LeafParts(MailBody* root) : index_(mailGetBody(root)) {}
    ~LeafParts() { mailFreeBodyIdx(index_); }
    LeafParts(const LeafParts&) = delete;
    LeafParts& operator=(const LeafParts&) = delete;

    struct End {};
    class Iterator {
      public:
        explicit Iterator(MailBodyList** at) : at_(at) {}
        MailBody& operator*() const { return *(*at_)->body; }
        void operator++() { ++at_; }
        bool operator!=(End) const { return at_ && *at_; }

      private:
        MailBodyList** at_;
    };
    Iterator begin() const { return Iterator(index_); }
    End end() const { return {}; }

    template <typename Predicate>
    bool any(Predicate holds) const {
        for (const MailBody& part : *this)
            if (holds(part)) return true;
        return false;
    }
    size_t count() const {
        size_t n = 0;
        for (Iterator part = begin(); part != End(); ++part) n++;
        return n;
    }

  private:
    MailBodyList** index_;
};

inline bool hasSubType(const MailBody& part, string_view subType) {
    return equalNoCase(viewOf(part.subType), subType);
}
/// A text that is shown, not attached.
inline bool isBodyText(const MailBody& part) {
    return part.type == kText && !part.fileName;
}

/// The part's type and subtype joined by "/"; a type outside the table counts as unknown.
Text mediaTypeText(const MailBody& part);

/// The answers of mailChkBodyType() and mailChkCID() for callers that hold the index already.
int bodyTypeOf(const LeafParts& parts);
bool hasReferences(const LeafParts& parts);

}  // namespace attalven

#endif
